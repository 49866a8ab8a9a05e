#pragma once

#include "article/server/OstrelServerUserObject.h"
#include "article/server/UploadFile.h"
#include "platform/foundation/values/Data.h"
#include "platform/foundation/values/Value.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <variant>

namespace ostrel {

/// The two texts of an answer. An error that is absent means success; the answer may be present beside an error.
/// The texts are valid while the handler runs.
using AnswerHandler =
    std::function<void(const std::optional<std::string>& answer, const std::optional<std::string>& error)>;
using FormFields = std::map<std::string, std::string>;
/// A file (data, or one that is read or made when it is sent; the key is its file name) or a plain field (text).
using UploadPart = std::variant<Data, std::string, UploadFile>;
using UploadBody = std::map<std::string, UploadPart>;
/// The fraction sent so far, 0 to 1; any thread.
using ProgressHandler = std::function<void(double fraction)>;
using FaceHandler = std::function<void(const Data& image)>;

/// What an upload returns: a way to follow or cancel it. The module discards it.
class Transfer {
public:
    virtual ~Transfer() = default;
    /// Ends the transfer; its handler is called with an error. Any thread; harmless when it has ended.
    virtual void cancel() = 0;
};

/// The shared connection to the application's web server, required of the server framework. Every operation may be
/// called from any thread and calls its handler exactly once, on the main thread, never before it returned.
/// Paths are relative to the server's base address, with or without a leading "/", and are sent as they stand.
class OstrelServer {
public:
    virtual ~OstrelServer() = default;

    /// The one shared server of the installed framework. Looked up before every request, never stored.
    static OstrelServer& shareServer();

    /// The signed-in user, or null. Any thread, at any time.
    virtual std::shared_ptr<const OstrelServerUserObject> currentUser() const = 0;
    /// GET.
    virtual void request(const std::string& path, AnswerHandler handler) = 0;
    /// POST of form fields (application/x-www-form-urlencoded).
    virtual void postURL(const std::string& path, const FormFields& fields, AnswerHandler handler) = 0;
    /// POST of files and fields (multipart/form-data, RFC 7578).
    virtual std::shared_ptr<Transfer> postManyDataURL(const std::string& path, const UploadBody& body,
                                                      AnswerHandler handler, ProgressHandler progress) = 0;
    /// The avatar of a user (id as decimal text): the image's bytes, or null data when there is none.
    virtual void loadUserFace(const std::string& userId, FaceHandler handler) = 0;
    /// Sends a short message to a user; `userId` is the record's value as it stands. Nothing is reported back.
    virtual void notificationUserID(const Value& userId, const std::string& title,
                                    const std::string& text) = 0;
};

}  // namespace ostrel
