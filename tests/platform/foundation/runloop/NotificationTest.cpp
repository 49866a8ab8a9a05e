#include "platform/foundation/runloop/NSNotificationCenter.h"

#include <gtest/gtest.h>

namespace ostrel {
namespace {

class NSNotificationCenterTest : public testing::Test {
protected:
    /// Observes "N" by a handler that records `mark` and then calls `more`.
    void observe(const char& mark, std::function<void()> more = {}) {
        center_.addObserver(&mark, "N", [this, mark, more](const NSNotification&) {
            calls_ += mark;
            if (more) more();
        });
    }
    std::string post() {
        calls_.clear();
        center_.postNotification("N");
        return calls_;
    }

    NSNotificationCenter center_;
    std::string calls_;
    const char a_ = 'a', b_ = 'b', c_ = 'c', d_ = 'd', e_ = 'e';
};

TEST_F(NSNotificationCenterTest, CallsObserversOfTheNameInOrderWithTheObject) {
    const Value record = Value::parse(R"({"id":7})");
    std::string name;
    Value object;
    observe(a_);
    center_.addObserver(&b_, "N", [&](const NSNotification& notification) {
        name = notification.name;
        object = notification.object;
        calls_ += 'b';
    });
    center_.addObserver(&c_, "Other", [&](const NSNotification&) { calls_ += 'c'; });
    center_.postNotification("N", record);
    EXPECT_EQ(calls_, "ab");
    EXPECT_EQ(name, "N");
    EXPECT_EQ(object, record);
}

TEST_F(NSNotificationCenterTest, ChangesDuringAPostCountAtOnceOrInTheNextPost) {
    // What the handler of "a" does during the first post, and the observers that two posts call.
    const std::tuple<const char*, std::function<void()>, const char*, const char*> cases[] = {
        {"it removes itself and one that waits", [this] { center_.removeObserver(&a_), center_.removeObserver(&c_); },
         "abd", "bd"},
        {"it adds one", [this] { observe(e_); }, "abcd", "abcde"},
        {"it posts and then removes one", [this] { center_.postNotification("N"), center_.removeObserver(&b_); },
         "aabcdcd", "acd"},
    };
    for (const auto& [what, change, first, second] : cases) {
        for (const char* observer : {&a_, &b_, &c_, &d_, &e_}) center_.removeObserver(observer);
        bool isFirst = true;
        observe(a_, [&isFirst, &change = change] {
            if (std::exchange(isFirst, false)) change();
        });
        for (const char* observer : {&b_, &c_, &d_}) observe(*observer);
        EXPECT_EQ(post(), first) << what;
        EXPECT_EQ(post(), second) << what;
    }
}

TEST_F(NSNotificationCenterTest, ReleasingAHandlerMayRemoveOtherObservers) {
    std::shared_ptr<void> owner(nullptr, [this](void*) { center_.removeObserver(&b_); });
    observe(a_, [owner] {});
    observe(b_);
    observe(c_);
    owner.reset();
    center_.removeObserver(&a_);
    EXPECT_EQ(post(), "c");
}

}  // namespace
}  // namespace ostrel
