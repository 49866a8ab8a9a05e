#include "articleserver/media/Mp4File.h"
#include "tests/articleserver/ServerFixture.h"

#include <fcntl.h>
#include <fstream>
#include <unistd.h>

namespace articleserver {

TEST(Mp4FileTest, IsWholeOrRefusedAndSurvivesEveryFlippedByte) {
    TemporaryFolder folder;
    const std::string path = folder.path("clip.mp4");
    const auto inspected = [&](const std::string& bytes) {
        std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
        const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
        auto facts = inspectMp4(descriptor);
        ::close(descriptor);
        return facts;
    };
    const std::string whole = bytesOf(OSTREL_SOURCE_DIR "/samples/clips/rain.mp4");
    const auto facts = inspected(whole);
    ASSERT_TRUE(facts) << facts.failure().text;
    EXPECT_NEAR(facts->duration, 4, 0.1);
    EXPECT_EQ(facts->width, 360) << "the matrix of the track rotates the frames";
    EXPECT_EQ(facts->height, 640);
    for (std::size_t length = 0; length < whole.size(); length += 1 + length / 8)
        EXPECT_FALSE(inspected(whole.substr(0, length))) << length;
    const std::size_t index = whole.find("moov");
    for (std::size_t at = 0; at < 400; ++at) {
        for (const std::size_t place : {at, index - 4 + at}) {
            std::string flipped = whole;
            flipped[place] = static_cast<char>(~flipped[place]);
            static_cast<void>(inspected(flipped).isOk());
        }
    }
}

}  // namespace articleserver
