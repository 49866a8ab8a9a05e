#include "articleserver/routes/PasswordHasher.h"

#include "articleserver/common/ServerLimits.h"

#include <sodium.h>

#include <array>
#include <cstddef>

namespace articleserver {

namespace {

std::string hashed(std::string_view password) {
    std::array<char, crypto_pwhash_STRBYTES> text{};
    int code = crypto_pwhash_str_alg(text.data(), password.data(), password.size(), crypto_pwhash_OPSLIMIT_INTERACTIVE,
                                     crypto_pwhash_MEMLIMIT_INTERACTIVE, crypto_pwhash_ALG_ARGON2ID13);
    return code == 0 ? std::string(text.data()) : std::string();
}

/// The hash of a password that nobody has. It has the same parameters as real hashes, so that the check of a
/// password against it takes the same time. Nobody can sign in by it: matches() refuses an empty hash
/// whatever the check finds.
std::string decoyHash() {
    constexpr std::size_t saltCharacters = 22;
    constexpr std::size_t hashCharacters = 43;
    return "$argon2id$v=19$m=" + std::to_string(crypto_pwhash_MEMLIMIT_INTERACTIVE / 1024) +
           ",t=" + std::to_string(crypto_pwhash_OPSLIMIT_INTERACTIVE) + ",p=1$" + std::string(saltCharacters, 'A') +
           "$" + std::string(hashCharacters, 'A');
}

}  // namespace

/// The right to hash. The constructor waits for it, unless too many calls wait already.
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
    std::string compared = hash.empty() ? decoyHash() : std::string(hash);
    bool isMatch = crypto_pwhash_str_verify(compared.c_str(), password.data(), password.size()) == 0;
    return isMatch && !hash.empty();
}

}  // namespace articleserver
