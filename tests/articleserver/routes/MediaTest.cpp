#include "tests/articleserver/ServerFixture.h"

#include <chrono>
#include <fstream>

namespace articleserver {

namespace {

class MediaTest : public ServerTest {
protected:
    /// The database names the file, so that a restart keeps it.
    std::string addPicture(const std::string& bytes, const std::string& extension = "jpg") {
        StoredArticle article;
        article.authorId = userId("Ada");
        article.images = {{0, addMedia(bytes, extension), addMedia("thumbnail", "jpg"), 1, 1, ""}};
        EXPECT_TRUE(store().addArticle(article));
        return article.images[0].file;
    }
};

}  // namespace

TEST_F(MediaTest, WholeFilesComeWithTheirFacts) {
    std::string bytes(300'000, '\0');
    for (std::size_t index = 0; index < bytes.size(); ++index) bytes[index] = static_cast<char>(index * 7 % 251);
    std::string name = addPicture(bytes);
    Answer answer = get("/media/" + name);
    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, bytes);
    EXPECT_EQ(answer.header("Content-Type"), "image/jpeg");
    EXPECT_EQ(answer.header("Accept-Ranges"), "bytes");
    EXPECT_EQ(answer.header("X-Content-Type-Options"), "nosniff");
    EXPECT_EQ(get("/media/" + addPicture("clip", "mp4")).header("Content-Type"), "video/mp4");

    for (const std::string& tags : {answer.header("ETag"), std::string("*"), "\"x\", W/" + answer.header("ETag")}) {
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
          Case{"bytes=99999999999999999999-", 416, nullptr, "bytes */10"},
          Case{"bytes=5-99999999999999999999", 206, "56789", "bytes 5-9/10"},
          Case{"bytes=-99999999999999999999", 206, "0123456789", "bytes 0-9/10"},
          Case{"chapters=1-2", 200, "0123456789", ""}}) {
        Answer answer = get("/media/" + name, "", {{"Range", tried.range}});
        EXPECT_EQ(answer.status, tried.status) << tried.range;
        if (tried.body) {
            EXPECT_EQ(answer.body, tried.body) << tried.range;
        }
        EXPECT_EQ(answer.header("Content-Range"), tried.contentRange) << tried.range;
    }
    httplib::Client client("127.0.0.1", server_->port());
    auto head = client.Head("/media/" + name, {{"Range", "bytes=0-1"}});
    EXPECT_EQ(head->status, 200) << "a range is for GET alone";
    EXPECT_EQ(head->get_header_value("Content-Length"), "10");
    std::string empty = addPicture("");
    EXPECT_EQ(get("/media/" + empty, "", {{"Range", "bytes=0-"}}).status, 416);
    EXPECT_EQ(get("/media/" + empty).status, 200);
}

TEST_F(MediaTest, ConditionsAreHeldInTheirOrder) {
    std::string name = addPicture("0123456789");
    // 2026-11-21T02:32:38Z, that is startTime.
    std::filesystem::last_write_time(mediaFolder() / name, std::chrono::file_clock::from_sys(std::chrono::sys_seconds(
                                                               std::chrono::seconds(startTime / 1000))));
    now_ += 10'000;
    const std::string tag = get("/media/" + name).header("ETag");
    const char* same = "Sat, 21 Nov 2026 02:32:38 GMT";
    const char* before = "Saturday, 21-Nov-26 02:32:37 GMT";
    const char* after = "Sat Nov 21 02:32:39 2026";
    ASSERT_EQ(get("/media/" + name).header("Last-Modified"), same);
    const std::string range = "bytes=0-1";
    struct Case {
        httplib::Headers headers;
        int status;
    };
    const Case cases[] = {{{{"If-None-Match", tag}}, 304},
                          {{{"If-None-Match", "W/" + tag}}, 304},
                          {{{"If-None-Match", "\"old\""}, {"If-Modified-Since", same}}, 200},
                          {{{"If-Modified-Since", same}}, 304},
                          {{{"If-Modified-Since", after}}, 304},
                          {{{"If-Modified-Since", before}}, 200},
                          {{{"If-Modified-Since", "yesterday"}}, 200},
                          {{{"If-Modified-Since", "Sat, 31 Feb 2026 02:32:38 GMT"}}, 200},
                          {{{"If-Match", tag}}, 200},
                          {{{"If-Match", "*"}}, 200},
                          {{{"If-Match", "\"old\", " + tag}}, 200},
                          {{{"If-Match", "W/" + tag}}, 412},
                          {{{"If-Match", "\"old\""}, {"If-None-Match", tag}}, 412},
                          {{{"If-Match", tag}, {"If-Unmodified-Since", before}}, 200},
                          {{{"If-Unmodified-Since", before}}, 412},
                          {{{"If-Unmodified-Since", same}}, 200},
                          {{{"If-Unmodified-Since", same}, {"If-None-Match", tag}}, 304},
                          {{{"Range", range}, {"If-Range", tag}}, 206},
                          {{{"Range", range}, {"If-Range", "W/" + tag}}, 200},
                          {{{"Range", range}, {"If-Range", "\"old\""}}, 200},
                          {{{"Range", range}, {"If-Range", same}}, 206},
                          {{{"Range", range}, {"If-Range", before}}, 200},
                          {{{"Range", range}, {"If-Range", after}}, 200},
                          {{{"Range", range}, {"If-None-Match", tag}}, 304},
                          {{{"Range", range}, {"If-Match", tag}}, 206},
                          {{{"Range", "bytes=20-"}, {"If-Match", "\"old\""}}, 412},
                          {{{"Range", "bytes=20-"}, {"If-Range", "\"old\""}}, 200}};
    for (const Case& tried : cases) {
        std::string what;
        for (const auto& [header, value] : tried.headers) what += header + ": " + value + "  ";
        EXPECT_EQ(get("/media/" + name, "", tried.headers).status, tried.status) << what;
    }
    now_ = startTime;
    EXPECT_EQ(get("/media/" + name, "", {{"Range", range}, {"If-Range", same}}).status, 200)
        << "within its second a date says too little";
}

TEST_F(MediaTest, NoPathLeadsOutOfTheMedia) {
    std::ofstream(folder_.path("secret.jpg")) << "secret";
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

}  // namespace articleserver
