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
    const char a_ = 'a', b_ = 'b', c_ = 'c', d_ = 'd';
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

TEST_F(NSNotificationCenterTest, AnObserverRemovedDuringAPostIsNotCalled) {
    observe(a_, [&] {
        center_.removeObserver(&a_);
        center_.removeObserver(&c_);
    });
    observe(b_);
    observe(c_);
    observe(d_);
    EXPECT_EQ(post(), "abd");
    EXPECT_EQ(post(), "bd");
}

TEST_F(NSNotificationCenterTest, AnObserverAddedDuringAPostIsCalledByTheNextPost) {
    observe(a_, [&] {
        if (center_.observerCount() == 2) observe(c_);
    });
    observe(b_);
    EXPECT_EQ(post(), "ab");
    EXPECT_EQ(post(), "abc");
}

TEST_F(NSNotificationCenterTest, APostWithinAPostRunsAtOnce) {
    int depth = 0;
    observe(a_, [&] {
        if (++depth == 1) {
            center_.postNotification("N");
            center_.removeObserver(&b_);
        }
    });
    observe(b_);
    EXPECT_EQ(post(), "aab");
}

TEST_F(NSNotificationCenterTest, ReleasingAHandlerMayRemoveOtherObservers) {
    struct Owner {
        NSNotificationCenter& center;
        const void* other;
        ~Owner() { center.removeObserver(other); }
    };
    auto owner = std::make_shared<Owner>(center_, &b_);
    observe(a_, [owner] {});
    observe(b_);
    observe(c_);
    owner.reset();
    center_.removeObserver(&a_);
    EXPECT_EQ(post(), "c");
}

}  // namespace
}  // namespace ostrel
