#include "ServerFixture.h"

#include <fstream>

namespace ostrel {

namespace {

class MediaTest : public ServerTest {
protected:
    /// Known to the database, so that a restart keeps it.
    std::string addPicture(const std::string& bytes) {
        StoredArticle article;
        article.authorId = userId("Ada");
        article.images = {{0, addMedia(bytes, "jpg"), addMedia("thumbnail", "jpg"), 1, 1, ""}};
        EXPECT_TRUE(store().addArticle(article));
        return article.images[0].file;
    }
};

}  // namespace

TEST_F(MediaTest, WholeFilesComeWithTheirFacts) {
    std::string bytes(300'000, '\0');
    for (std::size_t index = 0; index < bytes.size(); ++index)
        bytes[index] = static_cast<char>(index * 7 % 251);
    std::string name = addPicture(bytes);
    Answer answer = get("/media/" + name);
    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, bytes);
    EXPECT_EQ(answer.header("Content-Type"), "image/jpeg");
    EXPECT_EQ(answer.header("Accept-Ranges"), "bytes");
    EXPECT_EQ(answer.header("X-Content-Type-Options"), "nosniff");
    EXPECT_TRUE(answer.header("Last-Modified").ends_with(" GMT"));
    Answer facts = head("/media/" + name);
    EXPECT_EQ(facts.header("Content-Length"), "300000");
    EXPECT_EQ(facts.header("ETag"), answer.header("ETag"));

    for (const std::string& tags :
         {answer.header("ETag"), std::string("*"), "\"x\", W/" + answer.header("ETag")}) {
        Answer same = get("/media/" + name, "", {{"If-None-Match", tags}});
        EXPECT_EQ(same.status, 304) << tags;
        EXPECT_EQ(same.body, "");
    }
    EXPECT_EQ(get("/media/" + name, "", {{"If-None-Match", "\"x\""}}).status, 200);
}

TEST_F(MediaTest, RangesAreServedAsAsked) {
    std::string name = addPicture("0123456789");
    struct Case {
        const char* range;
        int status;
        const char* body;
        const char* contentRange;
    };
    for (const Case& tried :
         {Case{"bytes=0-3", 206, "0123", "bytes 0-3/10"}, Case{"bytes=8-", 206, "89", "bytes 8-9/10"},
          Case{"bytes=-3", 206, "789", "bytes 7-9/10"}, Case{"bytes=4-100", 206, "456789", "bytes 4-9/10"},
          Case{"bytes=-100", 206, "0123456789", "bytes 0-9/10"}, Case{"bytes=9-9", 206, "9", "bytes 9-9/10"},
          Case{"Bytes=0-0", 206, "0", "bytes 0-0/10"}, Case{"bytes=10-", 416, nullptr, "bytes */10"},
          Case{"bytes=-0", 416, nullptr, "bytes */10"}, Case{"bytes=3-1", 200, "0123456789", ""},
          Case{"bytes=0-1,4-5", 200, "0123456789", ""}, Case{"bytes=x", 200, "0123456789", ""},
          Case{"bytes=99999999999999999999-", 200, "0123456789", ""},
          Case{"chapters=1-2", 200, "0123456789", ""}}) {
        Answer answer = get("/media/" + name, "", {{"Range", tried.range}});
        EXPECT_EQ(answer.status, tried.status) << tried.range;
        if (tried.body) {
            EXPECT_EQ(answer.body, tried.body) << tried.range;
        }
        EXPECT_EQ(answer.header("Content-Range"), tried.contentRange) << tried.range;
    }
    std::string tag = get("/media/" + name).header("ETag");
    EXPECT_EQ(get("/media/" + name, "", {{"Range", "bytes=0-1"}, {"If-Range", tag}}).status, 206);
    EXPECT_EQ(get("/media/" + name, "", {{"Range", "bytes=0-1"}, {"If-Range", "\"old\""}}).status, 200);
}

TEST_F(MediaTest, NoPathLeadsOutOfTheMedia) {
    std::ofstream(folder_.path() / "secret.jpg") << "secret";
    std::ofstream(mediaFolder() / "plain.jpg") << "secret";
    std::filesystem::create_symlink("/etc", mediaFolder() / "link");
    for (const char* path :
         {"/media/", "/media", "/media/plain.jpg", "/media/../secret.jpg", "/media/..%2Fsecret.jpg",
          "/media/%2e%2e/secret.jpg", "/media/....//secret.jpg", "/media/link/passwd", "/media//etc/passwd",
          "/media/%2Fetc%2Fpasswd", "/media/../articles.sqlite", "/articles.sqlite", "/lock",
          "/media/aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa.jpg", "/media/AAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA.jpg",
          "/media/aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa.sqlite"}) {
        Answer answer = get(path);
        EXPECT_EQ(answer.status, 404) << path;
        EXPECT_EQ(answer.body.find("secret"), std::string::npos) << path;
    }
    EXPECT_EQ(get("/media/%00").status, 400);
}

TEST_F(MediaTest, StartSweepsLeftOversOfOurOwnMakingOnly) {
    std::string kept = addPicture("kept");
    std::string orphan = addMedia("orphan", "jpg");
    std::string partial = addMedia("half", "mp4");
    std::filesystem::rename(mediaFolder() / partial, mediaFolder() / (partial + ".part"));
    std::ofstream(mediaFolder() / "notes.txt") << "somebody's";
    start();
    EXPECT_EQ(get("/media/" + kept).body, "kept");
    EXPECT_FALSE(std::filesystem::exists(mediaFolder() / orphan));
    EXPECT_FALSE(std::filesystem::exists(mediaFolder() / (partial + ".part")));
    EXPECT_TRUE(std::filesystem::exists(mediaFolder() / "notes.txt"));
}

}  // namespace ostrel
