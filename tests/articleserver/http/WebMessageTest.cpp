#include "articleserver/http/WebMessage.h"
#include "articleserver/common/ServerText.h"
#include "articleserver/routes/AttemptLimiter.h"

#include <gtest/gtest.h>

namespace articleserver {

TEST(WebMessageTest, FieldsAreDecodedOrRefused) {
    auto fields = parseFields("a=1&b=x+y%26%3D&&empty=&bare&%E5%90%8D=%E6%9E%97");
    ASSERT_TRUE(fields);
    EXPECT_EQ(*fields, (WebFields{{"a", "1"}, {"b", "x y&="}, {"empty", ""}, {"bare", ""}, {"名", "林"}}));
    for (const char* broken :
         {"a=%", "a=%4", "a=%G0", "%zz=1", "a=%00", "a=%ED%A0%80", "a=%C0%AF", "a=1&a=2"}) {
        EXPECT_FALSE(parseFields(broken)) << broken;
    }
}

TEST(WebMessageTest, MultipartPartsKeepTheirBytes) {
    const std::string type = "multipart/form-data; charset=x; boundary=\"b-1\"";
    const std::string binary("\x00\r\n--b-2\r\n\xFF", 11);
    const std::string body =
        "preamble\r\n--b-1\r\nContent-Disposition: form-data; name=\"image.jpg\"; "
        "filename=\"a;\\\"b.jpg\"\r\nContent-Type: image/jpeg\r\n\r\n" +
        binary + "\r\n--b-1\r\ncontent-disposition: form-data; name=text\r\n\r\n\r\n--b-1--\r\nend";
    auto parts = parseMultipart(type, body);
    ASSERT_TRUE(parts) << parts.failure().text;
    ASSERT_EQ(parts->size(), 2U);
    EXPECT_EQ((*parts)[0].name, "image.jpg");
    EXPECT_EQ((*parts)[0].content, binary);
    EXPECT_EQ((*parts)[1].name, "text");
    EXPECT_EQ((*parts)[1].content, "");
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
    std::string long1 =
        "--b\r\nContent-Disposition: form-data; name=\"" + std::string(9000, 'n') + "\"\r\n\r\nv\r\n--b--";
    EXPECT_FALSE(parseMultipart(type, long1));
    EXPECT_FALSE(parseMultipart(type, "--b\r\nContent-Type: text/plain\r\n\r\nv\r\n--b--"));
}

TEST(WebMessageTest, HostsThatMayStandInAnAddress) {
    for (const char* valid :
         {"a", "127.0.0.1", "127.0.0.1:8080", "example.org:1", "[::1]", "[fe80::1]:65535"}) {
        EXPECT_TRUE(isHostAndPort(valid)) << valid;
    }
    for (const char* invalid : {"", ":80", "a:", "a:0", "a:65536", "a:80:90", "a b", "a/b", "a?b", "a@b",
                                "::1", "[::1", "[]", "[x]", "a\"", "a<b"}) {
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

TEST(ServerTextTest, DatesOfEveryForm) {
    struct Case {
        ServerTime time;
        const char* iso;
        const char* http;
    };
    for (const Case& tried :
         {Case{0, "1970-01-01T00:00:00.000Z", "Thu, 01 Jan 1970 00:00:00 GMT"},
          Case{-1, "1969-12-31T23:59:59.999Z", "Wed, 31 Dec 1969 23:59:59 GMT"},
          Case{1709164800007, "2024-02-29T00:00:00.007Z", "Thu, 29 Feb 2024 00:00:00 GMT"}}) {
        EXPECT_EQ(isoDate(tried.time), tried.iso);
        EXPECT_EQ(httpDate(tried.time), tried.http);
    }
}

TEST(ServerTextTest, InitialsOfManyScripts) {
    struct Case {
        const char* name;
        const char* initial;
    };
    for (const Case& tried :
         {Case{"ada", "A"}, Case{"林小满", "林"}, Case{"éva", "É"}, Case{"e\xCC\x81va", "E\xCC\x81"},
          Case{"ßen", "SS"}, Case{"йван", "Й"}, Case{"", "?"}}) {
        EXPECT_EQ(nameInitial(tried.name), tried.initial) << tried.name;
    }
}

TEST(AttemptLimiterTest, WindowSlidesAndMemoryIsBounded) {
    AttemptLimiter limiter(2, 100, 3);
    EXPECT_TRUE(limiter.take("a", 0));
    EXPECT_TRUE(limiter.take("a", 60));
    EXPECT_FALSE(limiter.take("a", 99));
    EXPECT_TRUE(limiter.take("a", 100));
    EXPECT_FALSE(limiter.take("a", 110));
    limiter.giveBack("a");
    EXPECT_TRUE(limiter.take("a", 110));
    // The key whose last attempt is oldest makes room for a fourth.
    EXPECT_TRUE(limiter.take("b", 120));
    EXPECT_TRUE(limiter.take("c", 121));
    EXPECT_TRUE(limiter.take("d", 122));
    EXPECT_TRUE(limiter.take("a", 123));
}

}  // namespace articleserver
