#pragma once

#include "platform/foundation/runloop/NSProgress.h"
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

/// Uploads in the order they were handed over, a few at a time. Their files are made and opened on threads of this
/// object when their turn comes, so that the caller waits for nothing and what waits takes no memory. While a large
/// upload is under way it is in the list of work in progress (`NSProgress`), where it can be cancelled too.
class UploadQueue final : public std::enable_shared_from_this<UploadQueue> {
public:
    struct Limits {
        /// Being prepared or sent. Fewer than the connections to one host, so that they never hold up other requests.
        int simultaneous = 6;
        /// Threads that make files: encoding a picture keeps one processor busy.
        int makers = 2;
        /// A smaller upload is over before anybody has read its title.
        std::uint64_t shownBytes = std::uint64_t{256} * 1024;
    };
    /// What an upload does when its turn has come. Called once altogether, by any thread.
    struct Order {
        std::shared_ptr<const UploadBody> body;
        /// Sends it and returns the number by which `cancel` ends it. `ended` is called once when it is over.
        std::function<std::uint64_t(std::shared_ptr<PreparedUpload>, ProgressHandler, Task ended)> send;
        /// Ends it with an error instead.
        std::function<void(const std::string& error)> refuse;
        /// Ends one that was sent.
        std::function<void(std::uint64_t)> cancel;
    };

    explicit UploadQueue(Limits limits) : limits_(limits) {}
    ~UploadQueue();

    /// Cancelling what is returned refuses an upload that waits, and ends one that is being sent. Any thread.
    std::shared_ptr<Transfer> add(Order order);
    /// Refuses what waits and what comes; uploads being sent are left to the transport.
    void stop();

private:
    class Upload;
    using Uploads = std::deque<std::shared_ptr<Upload>>;

    void run();
    void remove(const std::shared_ptr<Upload>& upload);
    void releaseLane();

    const Limits limits_;
    std::mutex mutex_;
    std::condition_variable changed_;
    Uploads waiting_;                   // guarded by mutex_
    int underWay_ = 0;                  // guarded by mutex_
    bool stopping_ = false;             // guarded by mutex_
    std::vector<std::thread> threads_;  // guarded by mutex_; started with the first upload
};

}  // namespace ostrel
