#pragma once

#include "articleserver/common/ServerResult.h"

#include <condition_variable>
#include <mutex>
#include <string>
#include <string_view>

namespace articleserver {

/// Passwords as argon2id hashes with libsodium's interactive limits (RFC 9106: 2 passes, 64 MiB). At most
/// ServerLimits::hashingsAtOnce run at a time and ServerLimits::hashingsWaiting wait; beyond that callers get Busy.
/// Blocks the calling thread, about 0.1 seconds when it does not wait.
class PasswordHasher final {
public:
    PasswordHasher();

    ServerResult<std::string> hash(std::string_view password);
    /// An empty hash matches no password, yet takes as long as any other, so that an answer's time does
    /// not tell whether a name exists.
    ServerResult<bool> matches(std::string_view hash, std::string_view password);

private:
    class Turn;

    std::mutex mutex_;
    std::condition_variable free_;
    int running_ = 0;  ///< guarded by mutex_
    int waiting_ = 0;  ///< guarded by mutex_
    std::string decoy_;
};

}  // namespace articleserver
