#pragma once

#include "article/server/AnswerText.h"
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
using AnswerHandler =
    std::function<void(const std::optional<AnswerText>& answer, const std::optional<std::string>& error)>;
using FormFields = std::map<std::string, std::string>;
/// A file, whose key is its file name, or a plain field. The file is data, or an `UploadFile` that is read or made when
/// it is sent.
using UploadPart = std::variant<Data, std::string, UploadFile>;
using UploadBody = std::map<std::string, UploadPart>;
/// Gets the fraction that was sent so far, 0 to 1. Any thread.
using ProgressHandler = std::function<void(double fraction)>;
using FaceHandler = std::function<void(const Data& image)>;

/// An upload that can be cancelled. The module ignores it.
class Transfer {
public:
    virtual ~Transfer() = default;
    /// Ends the transfer, whose handler then gets an error. Does nothing when the transfer has ended. Any thread.
    virtual void cancel() = 0;
};

/// The shared connection to the application's web server, which the server framework implements. Any thread may call
/// its operations. Each calls its handler exactly once, on the main thread, after the operation has returned. Paths are
/// relative to the server's base address, with or without a leading "/", and are sent unchanged.
class OstrelServer {
public:
    virtual ~OstrelServer() = default;

    /// The shared server of the installed framework. Callers look it up before every request and do not store it.
    static OstrelServer& shareServer();

    /// The signed-in user, or null.
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
    /// Sends a short message to a user; `userId` is the unchanged value of a record. The caller does not learn the
    /// outcome.
    virtual void notificationUserID(const Value& userId, const std::string& title, const std::string& text) = 0;
};

}  // namespace ostrel
