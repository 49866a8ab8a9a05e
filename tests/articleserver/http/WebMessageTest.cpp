#include "articleserver/http/WebMessage.h"
#include "articleserver/common/ServerText.h"
#include "articleserver/http/MultipartReader.h"
#include "articleserver/routes/AttemptLimiter.h"

#include <gtest/gtest.h>

namespace articleserver {

namespace {

/// Records its parts as a text.
class NotingSink final : public MultipartSink {
public:
    ServerResult<void> beginPart(const std::string& name, bool isFile) override {
        notes += "[" + name + (isFile ? "|file]" : "]");
        return {};
    }
    ServerResult<void> content(std::string_view bytes) override {
        notes += bytes;
        return {};
    }
    std::string notes;
};

}  // namespace

TEST(WebMessageTest, FieldsAreDecodedOrRefused) {
    auto fields = parseFields("a=1&b=x+y%26%3D&&empty=&bare&%E5%90%8D=%E6%9E%97");
    ASSERT_TRUE(fields);
    EXPECT_EQ(*fields, (WebFields{{"a", "1"}, {"b", "x y&="}, {"empty", ""}, {"bare", ""}, {"名", "林"}}));
    for (const char* broken : {"a=%", "a=%4", "a=%G0", "%zz=1", "a=%00", "a=%ED%A0%80", "a=%C0%AF", "a=1&a=2"}) {
        EXPECT_FALSE(parseFields(broken)) << broken;
    }
}

TEST(WebMessageTest, EveryCutOfAMultipartBodyIsRefused) {
    const std::string type = "multipart/form-data; boundary=b";
    const std::string body = "--b\r\nContent-Disposition: form-data; name=\"n\"\r\n\r\nvalue\r\n--b--";
    ASSERT_TRUE(parseMultipart(type, body));
    for (std::size_t length = 0; length < body.size(); ++length) {
        EXPECT_FALSE(parseMultipart(type, body.substr(0, length))) << length;
    }
    for (const char* other : {"", "multipart/form-data", "multipart/form-data; boundary=",
                              "multipart/form-data; boundary=\"b", "multipart/form-data; boundary=c"}) {
        EXPECT_FALSE(parseMultipart(other, body)) << other;
    }
    const std::string longName(9000, 'n');
    EXPECT_FALSE(
        parseMultipart(type, "--b\r\nContent-Disposition: form-data; name=\"" + longName + "\"\r\n\r\nv\r\n--b--"));
    EXPECT_FALSE(parseMultipart(type, "--b\r\nContent-Type: text/plain\r\n\r\nv\r\n--b--"));
}

TEST(MultipartReaderTest, ReadsTheSameInPiecesOfEverySize) {
    const std::string body = "preamble\r\n--b-\r\nContent-Disposition: form-data; name=\"t\"\r\n\r\n"
                             "a\r\n--b\r\n-\xFF\r\n--\r\n--b-\r\ncontent-disposition: form-data; name=f; "
                             "filename=\"a;\\\"b\"\r\nX: y\r\n\r\n\r\n--b---\r\nend";
    for (std::size_t piece = 1; piece <= body.size(); ++piece) {
        NotingSink sink;
        MultipartReader reader("multipart/form-data; charset=x; boundary=\"b-\"", sink);
        for (std::size_t at = 0; at < body.size(); at += piece)
            ASSERT_TRUE(reader.take(std::string_view(body).substr(at, piece)));
        EXPECT_TRUE(reader.finish());
        EXPECT_EQ(sink.notes, "[t]a\r\n--b\r\n-\xFF\r\n--[f|file]") << piece;
    }
}

TEST(WebMessageTest, HostsThatMayStandInAnAddress) {
    for (const char* valid : {"a", "127.0.0.1", "127.0.0.1:8080", "example.org:1", "[::1]", "[fe80::1]:65535"}) {
        EXPECT_TRUE(isHostAndPort(valid)) << valid;
    }
    for (const char* invalid : {"", ":80", "a:", "a:0", "a:65536", "a:80:90", "a b", "a/b", "a?b", "a@b", "::1", "[::1",
                                "[]", "[x]", "a\"", "a<b"}) {
        EXPECT_FALSE(isHostAndPort(invalid)) << invalid;
    }
}

TEST(WebMessageTest, CookiesAreFoundByTheirWholeName) {
    WebRequest request;
    request.headers["cookie"] = "xa=0; a=1;b=2 ; a=3; =4; c";
    EXPECT_EQ(request.cookie("a"), "1");
    EXPECT_EQ(request.cookie("b"), "2");
    EXPECT_EQ(request.cookie("c"), "");
    EXPECT_EQ(request.cookie("missing"), "");
}

TEST(ServerTextTest, DatesBefore1970KeepTheirSecond) {
    EXPECT_EQ(isoDate(-1), "1969-12-31T23:59:59.999Z");
    EXPECT_EQ(httpDate(-1), "Wed, 31 Dec 1969 23:59:59 GMT");
    EXPECT_EQ(isoDate(1709164800007), "2024-02-29T00:00:00.007Z");
}

TEST(ServerTextTest, InitialsOfManyScripts) {
    for (const auto& [name, initial] :
         {std::pair("ada", "A"), std::pair("林小满", "林"), std::pair("éva", "É"),
          std::pair("e\xCC\x81va", "E\xCC\x81"), std::pair("ßen", "SS"), std::pair("йван", "Й"), std::pair("", "?")}) {
        EXPECT_EQ(nameInitial(name), initial) << name;
    }
}

TEST(AttemptLimiterTest, WindowSlidesAndMemoryIsBounded) {
    AttemptLimiter limiter(2, 100, 3);
    struct Case {
        const char* key;
        ServerTime time;
        bool isTaken;
    };
    // After "d", a fourth key, the limiter has forgotten "a", whose last attempt is the oldest.
    for (const Case& tried :
         {Case{"a", 0, true}, Case{"a", 60, true}, Case{"a", 99, false}, Case{"a", 100, true}, Case{"a", 110, false},
          Case{"b", 120, true}, Case{"c", 121, true}, Case{"d", 122, true}, Case{"a", 123, true}}) {
        EXPECT_EQ(limiter.take(tried.key, tried.time), tried.isTaken) << tried.key << tried.time;
    }
}

}  // namespace articleserver
