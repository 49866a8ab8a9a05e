#pragma once

#include <functional>
#include <string>

namespace ostrel {

/// Keeps the session between starts of an application, as one text with secrets. A host implements this class over the
/// place where it keeps secrets. Main thread.
class SessionStore {
public:
    virtual ~SessionStore() = default;
    /// Gets the kept text; empty when there is none or it cannot be read.
    using LoadHandler = std::function<void(const std::string& cookieText)>;

    /// Calls `handler` once on the main thread, before it returns or later: a keychain may ask the user first.
    virtual void load(LoadHandler handler) = 0;
    /// Replaces the kept text. The store logs a failure; the session then lasts as long as the process.
    virtual void save(const std::string& cookieText) = 0;
    virtual void clear() = 0;
};

/// A store that keeps the session in memory, as long as the object lives.
class MemorySessionStore final : public SessionStore {
public:
    void load(LoadHandler handler) override { handler(text_); }
    void save(const std::string& cookieText) override { text_ = cookieText; }
    void clear() override { text_.clear(); }

private:
    std::string text_;
};

}  // namespace ostrel
