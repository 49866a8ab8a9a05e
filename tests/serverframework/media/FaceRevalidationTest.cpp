#include "backends/headless/VirtualTime.h"
#include "serverframework/media/FaceLoader.h"

#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <vector>

namespace ostrel {
namespace {

/// A loader whose requests the test answers itself, on virtual time.
class FaceRevalidationTest : public testing::Test {
protected:
    struct Asked {
        std::string userId;
        std::string entityTag;
        std::function<void(HttpAnswer)> done;
    };

    /// The face shown for user 1, with the server answering `answer` if it is asked.
    std::string shown(long status, const std::string& body, const std::string& tag) {
        std::optional<Data> result;
        loader_->load("1", [&](const Data& image) { result = image; });
        if (!asked_.empty()) {
            HttpAnswer answer;
            answer.status = status;
            answer.body = body;
            answer.entityTag = tag;
            if (status == 0) answer.error = "The server cannot be reached.";
            const auto done = asked_.back().done;
            tags_.push_back(asked_.back().entityTag);
            asked_.clear();
            done(answer);
        }
        EXPECT_TRUE(result.has_value());
        return result && *result ? std::string(result->view()) : "none";
    }

    VirtualTime time_;
    std::vector<Asked> asked_;
    std::vector<std::string> tags_;
    std::shared_ptr<FaceLoader> loader_ = std::make_shared<FaceLoader>(
        FaceLoader::Limits{},
        [this](const std::string& userId, const std::string& tag, std::function<void(HttpAnswer)> done) {
            asked_.push_back({userId, tag, std::move(done)});
        });
};

TEST_F(FaceRevalidationTest, aStaleFaceIsConfirmedByItsTagReplacedOrKept) {
    EXPECT_EQ(shown(200, "old", "\"1\""), "old");
    time_.loop().advance(299);
    EXPECT_EQ(shown(200, "unasked", "\"x\""), "old");
    time_.loop().advance(2);
    EXPECT_EQ(shown(304, "", ""), "old");
    time_.loop().advance(301);
    EXPECT_EQ(shown(0, "", ""), "old") << "no connection: the kept one is shown";
    EXPECT_EQ(shown(200, "new", "\"2\""), "new") << "and the next request asks again";
    time_.loop().advance(301);
    EXPECT_EQ(shown(404, "", ""), "none");
    time_.loop().advance(59);
    EXPECT_EQ(shown(200, "unasked", ""), "none");
    time_.loop().advance(2);
    EXPECT_EQ(shown(200, "back", ""), "back");
    EXPECT_EQ(tags_, (std::vector<std::string>{"", "\"1\"", "\"1\"", "\"1\"", "\"2\"", ""}));
}

TEST_F(FaceRevalidationTest, handlersThatWaitAreCalledWhenTheLoaderGoes) {
    int calls = 0;
    loader_->load("1", [&](const Data& image) { calls += image.isNull(); });
    loader_->load("1", [&](const Data& image) { calls += image.isNull(); });
    loader_.reset();
    EXPECT_EQ(calls, 0);
    time_.loop().runUntilIdle();
    EXPECT_EQ(calls, 2);
}

}  // namespace
}  // namespace ostrel
