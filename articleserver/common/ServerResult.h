#pragma once

#include <optional>
#include <string>
#include <utility>
#include <variant>

namespace articleserver {

/// Why an operation of the article server was refused. Each maps to one HTTP status.
enum class ServerFault {
    badInput,     ///< 400
    signedOut,    ///< 401
    forbidden,    ///< 403
    notFound,     ///< 404
    conflict,     ///< 409
    tooLarge,     ///< 413
    unsupported,  ///< 415
    throttled,    ///< 429
    internal,     ///< 500
    busy,         ///< 503
    storageFull,  ///< 507
};

/// A refusal: its kind and one English sentence that users may see. The sentence never holds a secret.
struct ServerFailure {
    ServerFault fault = ServerFault::internal;
    std::string text;
};

/// A value, or the failure that explains why there is no value. Reading the absent side is a programming
/// error.
template <typename T>
class [[nodiscard]] ServerResult final {
public:
    ServerResult(T value) : state_(std::move(value)) {}
    ServerResult(ServerFailure failure) : state_(std::move(failure)) {}

    bool isOk() const { return std::holds_alternative<T>(state_); }
    explicit operator bool() const { return isOk(); }

    T& value() { return std::get<T>(state_); }
    const T& value() const { return std::get<T>(state_); }
    T& operator*() { return value(); }
    const T& operator*() const { return value(); }
    T* operator->() { return &value(); }
    const T* operator->() const { return &value(); }

    const ServerFailure& failure() const { return std::get<ServerFailure>(state_); }

private:
    std::variant<T, ServerFailure> state_;
};

/// The result of an operation that has no value to give: `return {};` is success.
template <>
class [[nodiscard]] ServerResult<void> final {
public:
    ServerResult() = default;
    ServerResult(ServerFailure failure) : failure_(std::move(failure)) {}

    bool isOk() const { return !failure_; }
    explicit operator bool() const { return isOk(); }

    const ServerFailure& failure() const { return *failure_; }

private:
    std::optional<ServerFailure> failure_;
};

}  // namespace articleserver
