#pragma once

#include "articleserver/common/ServerResult.h"

#include <condition_variable>
#include <mutex>
#include <string>
#include <string_view>

namespace articleserver {

/// Hashes passwords by argon2id with libsodium's interactive limits (RFC 9106: 2 passes, 64 MiB). At most
/// ServerLimits::hashingsAtOnce calls run at the same time and ServerLimits::hashingsWaiting wait; further
/// calls fail with `busy`. A call blocks its thread for about 0.1 seconds, and longer when it waits. Any
/// thread may call it.
class PasswordHasher final {
public:
    ServerResult<std::string> hash(std::string_view password);
    /// An empty hash matches no password. The check then takes as long as for any other hash, so that the
    /// time of an answer does not tell whether a user exists.
    ServerResult<bool> matches(std::string_view hash, std::string_view password);

private:
    class Turn;

    std::mutex mutex_;
    std::condition_variable free_;
    int running_ = 0;  ///< guarded by mutex_
    int waiting_ = 0;  ///< guarded by mutex_
};

}  // namespace articleserver
