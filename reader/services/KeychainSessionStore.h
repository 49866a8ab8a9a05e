#pragma once

#include "serverframework/account/SessionStore.h"

#include <QObject>

namespace ostrel {

/// Keeps the user's session in the keychain of the desktop, one entry for each `name`. Where there is no keychain the
/// session lasts as long as the process. Shows an embedder a SessionStore of its own: asynchronous, and each handler is
/// called once. Main thread.
class KeychainSessionStore final : public QObject, public SessionStore {
public:
    explicit KeychainSessionStore(const std::string& name);
    void load(LoadHandler handler) override;
    void save(const std::string& cookieText) override;
    void clear() override;

private:
    QString key_;
};

}  // namespace ostrel
