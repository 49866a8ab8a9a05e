#include "serverframework/media/MediumFacts.h"
#include "serverframework/media/MediaQueue.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace ostrel {
namespace {

constexpr std::int64_t now = 1'795'228'358;  // Sat, 21 Nov 2026 02:32:38 GMT
constexpr const char* dateOfNow = "Sat, 21 Nov 2026 02:32:38 GMT";

TEST(MediumFacts, freshnessFollowsTheAnswersHeaders) {
    struct Case {
        const char* cacheControl;
        const char* expires;
        const char* lastModified;
        const char* age;
        std::int64_t freshSeconds;  ///< -1: not to be kept
        bool mustRevalidate = false;
    };
    constexpr std::int64_t year = 365 * 24 * 3600;
    for (const Case& one : {
             Case{"max-age=60", "", "", "", 60},
             Case{"public, MAX-AGE=60, immutable", "", "", "", 60},
             Case{"max-age=60", "", "", "20", 40},
             Case{"max-age=60", "", "", "100", 0},
             Case{"max-age=\"60\"", "", "", "", 60},
             Case{"a=\"no-store, x\", max-age=60", "", "", "", 60},
             Case{"max-age=99999999999999999999", "", "", "", year},
             Case{"max-age=-1", "", "", "", 0},
             Case{"max-age=soon", "", "", "", 0},
             Case{"max-age=60", "Sat, 21 Nov 2026 03:32:38 GMT", "", "", 60},
             Case{"", "Sat, 21 Nov 2026 03:32:38 GMT", "", "", 3600},
             Case{"", "Sat, 21 Nov 2026 01:32:38 GMT", "", "", 0},
             Case{"", "0", "", "", 0},
             Case{"", "", "", "", 300},
             Case{"", "", "Sat, 21 Nov 2026 00:32:38 GMT", "", 720},
             Case{"", "", "Sat, 21 Nov 2015 00:32:38 GMT", "", 24 * 3600},
             Case{"", "", "Sat, 21 Nov 2037 00:32:38 GMT", "", 300},
             Case{"", "", "nonsense", "", 300},
             Case{"no-cache", "", "", "", 0, true},
             Case{"no-cache, max-age=60", "", "", "", 0, true},
             Case{"must-revalidate, max-age=60", "", "", "", 60, true},
             Case{"no-store", "", "", "", -1},
             Case{"max-age=60, No-Store", "", "", "", -1},
             Case{",, ,=,max-age", "", "", "", 0},
         }) {
        HttpAnswer answer;
        answer.status = 200;
        answer.date = dateOfNow;
        answer.cacheControl = one.cacheControl;
        answer.expires = one.expires;
        answer.lastModified = one.lastModified;
        answer.age = one.age;
        const auto facts = mediumFactsOf(answer, now);
        const std::string what = std::string(one.cacheControl) + "|" + one.expires + "|" + one.lastModified;
        ASSERT_EQ(facts.has_value(), one.freshSeconds >= 0) << what;
        if (!facts) continue;
        EXPECT_EQ(std::max<std::int64_t>(facts->freshUntil - now, 0), one.freshSeconds) << what;
        EXPECT_EQ(facts->isFreshAt(now), one.freshSeconds > 0) << what;
        EXPECT_EQ(facts->mustRevalidate, one.mustRevalidate) << what;
    }
    HttpAnswer varied;
    varied.vary = "Accept, *";
    EXPECT_FALSE(mediumFactsOf(varied, now));
    HttpAnswer old;
    old.date = "Sat, 21 Nov 2026 02:31:38 GMT";
    old.cacheControl = "max-age=90";
    EXPECT_EQ(mediumFactsOf(old, now)->freshUntil, now + 30) << "the time on the way counts";
}

TEST(MediaQueue, whatWasAskedForLastComesFirstAndWhatBelongsTogetherInOrder) {
    MediaQueue queue;
    const auto drained = [&] {
        std::string order;
        while (const auto url = queue.takeFirst()) order += *url;
        return order;
    };
    for (const char* url : {"a", "b", "c"}) queue.add(url, 1);
    queue.add("d", 2);
    queue.add("e", 2.04);
    queue.add("f", 2.08);
    queue.add("b", 2.1);
    queue.add("d", 2.1);
    EXPECT_TRUE(queue.contains("f"));
    queue.remove("f");
    EXPECT_EQ(drained(), "debac");
    EXPECT_TRUE(queue.isEmpty());
    queue.add("g", 3);
    EXPECT_EQ(drained(), "g");
}

}  // namespace
}  // namespace ostrel
