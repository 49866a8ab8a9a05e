#include "serverframework/media/FaceLoader.h"
#include "backends/headless/VirtualTime.h"
#include "tests/serverframework/FrameworkTest.h"

#include <string>
#include <vector>

namespace ostrel {
namespace {

/// A loader whose requests the test answers itself, on virtual time.
class FaceLoaderTest : public testing::Test {
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
    std::shared_ptr<FaceLoader> loader_ =
        std::make_shared<FaceLoader>(FaceLoader::Limits{}, [this](const std::string& userId, const std::string& tag,
                                                                  std::function<void(HttpAnswer)> done) {
            asked_.push_back({userId, tag, std::move(done)});
        });
};

TEST_F(FaceLoaderTest, aStaleFaceIsConfirmedByItsTagReplacedOrKept) {
    EXPECT_EQ(shown(200, "old", "\"1\""), "old");
    time_.loop().advance(299);
    EXPECT_EQ(shown(200, "unasked", "\"x\""), "old");
    time_.loop().advance(2);
    EXPECT_EQ(shown(304, "", ""), "old");
    time_.loop().advance(301);
    EXPECT_EQ(shown(0, "", ""), "old") << "no connection: the kept one is shown";
    EXPECT_EQ(shown(500, "", ""), "old") << "nor does a failing server say anything of the face";
    EXPECT_EQ(shown(200, "new", "\"2\""), "new") << "and the next request asks again";
    time_.loop().advance(301);
    EXPECT_EQ(shown(404, "", ""), "none");
    time_.loop().advance(59);
    EXPECT_EQ(shown(200, "unasked", ""), "none");
    time_.loop().advance(2);
    EXPECT_EQ(shown(200, "back", ""), "back");
    EXPECT_EQ(tags_, (std::vector<std::string>{"", "\"1\"", "\"1\"", "\"1\"", "\"1\"", "\"2\"", ""}));
}

TEST_F(FaceLoaderTest, handlersThatWaitAreCalledWhenTheLoaderGoes) {
    int calls = 0;
    loader_->load("1", [&](const Data& image) { calls += image.isNull(); });
    loader_->load("1", [&](const Data& image) { calls += image.isNull(); });
    loader_.reset();
    EXPECT_EQ(calls, 0);
    time_.loop().runUntilIdle();
    EXPECT_EQ(calls, 2);
}

using FaceTest = FrameworkTest;

TEST_F(FaceTest, overlappingRequestsAreJoinedAndNeitherGiantsNorOddIdsAreFaces) {
    int ended = 0, faces = 0;
    const auto load = [&](const std::string& userId) {
        client().loadUserFace(userId, [&](const Data& image) { ++ended, faces += image.view() == "face"; });
    };
    for (const char* none : {"", "-1", "1/../2", "1?a", "abc", "12345678901234567890"}) load(none);
    ASSERT_TRUE(runUntil([&] { return ended == 6; }));
    EXPECT_EQ(server_.connectionCount(), 0);
    server_.on("/account/avatar/5", answer(std::string(1024 * 1024 + 1, 'x')));
    load("5");
    ASSERT_TRUE(runUntil([&] { return ended == 7; }));
    EXPECT_EQ(faces, 0);
    server_.on("/account/avatar/5", answer("face"));
    for (int i = 0; i < 10; ++i) load("5");
    ASSERT_TRUE(runUntil([&] { return ended == 17; }));
    EXPECT_EQ(faces, 10);
    EXPECT_EQ(server_.requestCount("/account/avatar/5"), 2u);
}

}  // namespace
}  // namespace ostrel
