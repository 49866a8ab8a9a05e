#include "articleserver/routes/PasswordHasher.h"

#include "articleserver/common/ServerLimits.h"

#include <sodium.h>

#include <array>

namespace articleserver {

namespace {

std::string hashed(std::string_view password) {
    std::array<char, crypto_pwhash_STRBYTES> text{};
    int code = crypto_pwhash_str_alg(text.data(), password.data(), password.size(),
                                     crypto_pwhash_OPSLIMIT_INTERACTIVE, crypto_pwhash_MEMLIMIT_INTERACTIVE,
                                     crypto_pwhash_ALG_ARGON2ID13);
    return code == 0 ? std::string(text.data()) : std::string();
}

}  // namespace

/// The right to hash, waited for at construction when the queue is short enough.
class PasswordHasher::Turn final {
public:
    explicit Turn(PasswordHasher& owner) : owner_(owner) {
        std::unique_lock lock(owner_.mutex_);
        if (owner_.running_ >= ServerLimits::hashingsAtOnce) {
            if (owner_.waiting_ >= ServerLimits::hashingsWaiting) return;
            ++owner_.waiting_;
            owner_.free_.wait(lock, [&] { return owner_.running_ < ServerLimits::hashingsAtOnce; });
            --owner_.waiting_;
        }
        ++owner_.running_;
        isGiven_ = true;
    }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;
    ~Turn() {
        if (!isGiven_) return;
        {
            std::lock_guard lock(owner_.mutex_);
            --owner_.running_;
        }
        owner_.free_.notify_one();
    }

    bool isGiven() const { return isGiven_; }
    static ServerFailure busy() { return {ServerFault::busy, "The server is busy. Try again in a moment."}; }

private:
    PasswordHasher& owner_;
    bool isGiven_ = false;
};

PasswordHasher::PasswordHasher() {
    std::array<char, 32> random{};
    randombytes_buf(random.data(), random.size());
    decoy_ = hashed(std::string_view(random.data(), random.size()));
}

ServerResult<std::string> PasswordHasher::hash(std::string_view password) {
    Turn turn(*this);
    if (!turn.isGiven()) return Turn::busy();
    std::string text = hashed(password);
    if (text.empty()) return Turn::busy();
    return text;
}

ServerResult<bool> PasswordHasher::matches(std::string_view hash, std::string_view password) {
    Turn turn(*this);
    if (!turn.isGiven()) return Turn::busy();
    std::string compared = hash.empty() ? decoy_ : std::string(hash);
    bool isMatch = crypto_pwhash_str_verify(compared.c_str(), password.data(), password.size()) == 0;
    return isMatch && !hash.empty();
}

}  // namespace articleserver
