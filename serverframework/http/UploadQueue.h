#pragma once

#include "platform/foundation/runloop/NSProgress.h"
#include "serverframework/http/ClientLimits.h"
#include "serverframework/http/PreparedUpload.h"

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace ostrel {

/// Sends uploads in the order in which they were handed over, a few at a time. Threads of this object make and open the
/// files of an upload when its turn comes, so that handing over does not block and a backlog takes no memory. A large
/// upload is listed as work in progress (`NSProgress`) while it is sent, and can be cancelled there too.
class UploadQueue final : public std::enable_shared_from_this<UploadQueue> {
public:
    using Limits = UploadLimits;
    /// What an upload consists of and what the queue calls for it: either `send` or `refuse`, once, on any thread.
    struct Order {
        std::shared_ptr<const UploadBody> body;
        /// Sends the upload and returns the number by which `cancel` ends it. Calls `ended` once, when the upload is
        /// over.
        std::function<std::uint64_t(std::shared_ptr<PreparedUpload>, ProgressHandler, Task ended)> send;
        /// Ends the upload with an error before it is sent.
        std::function<void(const std::string& error)> refuse;
        /// Ends an upload that is being sent.
        std::function<void(std::uint64_t)> cancel;
    };

    explicit UploadQueue(Limits limits) : limits_(limits) {}
    ~UploadQueue();

    /// Cancelling the returned transfer refuses an upload that waits and ends an upload that is being sent. Any thread.
    std::shared_ptr<Transfer> add(Order order);
    /// Refuses the uploads that wait and those that are added later. The transport ends the uploads that are being
    /// sent.
    void stop();

private:
    class Upload;
    using Uploads = std::deque<std::shared_ptr<Upload>>;

    void run();
    void remove(const std::shared_ptr<Upload>& upload);
    void releaseLane();

    const Limits limits_;
    /// Guards all members that follow.
    std::mutex mutex_;
    std::condition_variable changed_;
    Uploads waiting_;
    /// Uploads that are being prepared or sent.
    int underWay_ = 0;
    bool stopping_ = false;
    /// Started with the first upload.
    std::vector<std::thread> threads_;
};

}  // namespace ostrel
