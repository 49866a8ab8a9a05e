#include "serverframework/client/ParsedAnswer.h"

#include "serverframework/http/ClientLimits.h"

#include <gtest/gtest.h>
#include <string>

namespace ostrel {
namespace {

struct Fields {
    const char* json;
    const char* error;  // null: none
    bool success;
    const char* result;
    std::size_t records;
    const char* more;  // null: none
};

TEST(ParsedAnswer, readsFieldsAndToleratesOtherTypes) {
    const Fields cases[] = {
        {R"({"success":true,"error":null,"result":"12","results":[{"id":1},{"id":2}],"more":"/a?before=1"})", nullptr,
         true, "12", 2, "/a?before=1"},
        {R"({"success":false,"error":"Not yours."})", "Not yours.", false, "", 0, nullptr},
        {R"({})", nullptr, false, "", 0, nullptr},
        {R"({"success":true,"error":{"code":4}})", R"({"code":4})", true, "", 0, nullptr},
        {R"({"success":1,"error":false,"result":12})", "false", true, "12", 0, nullptr},
        {R"({"success":null,"result":null,"results":null,"more":null})", nullptr, false, "", 0, nullptr},
        {R"({"result":{"a":1},"results":{"a":1},"more":["/a"]})", nullptr, false, "", 0, nullptr},
        {R"({"results":[{"id":1},null,"text",3,[{}],{}]})", nullptr, false, "", 2, nullptr},
        {R"({"more":""})", nullptr, false, "", 0, nullptr},
        {R"({"more":"http://other/a"})", nullptr, false, "", 0, nullptr},
        {R"({"more":"//other/a"})", nullptr, false, "", 0, nullptr},
        {R"({"more":"/a\r\nb"})", nullptr, false, "", 0, nullptr},
        {R"({"more":"article/a?b=http://c"})", nullptr, false, "", 0, "article/a?b=http://c"},
    };
    for (const Fields& one : cases) {
        const auto result = ParsedAnswer::parse(one.json);
        ASSERT_TRUE(result->isReadable()) << one.json << ": " << result->errString().value_or("");
        EXPECT_EQ(result->errString().value_or("none"), one.error ? one.error : "none") << one.json;
        EXPECT_EQ(result->success(), one.success) << one.json;
        EXPECT_EQ(result->resultString(), one.result) << one.json;
        EXPECT_EQ(result->resultsArray().size(), one.records) << one.json;
        EXPECT_EQ(result->moreResultsURL().value_or("none"), one.more ? one.more : "none") << one.json;
    }
}

TEST(ParsedAnswer, saysThatAnAnswerCannotBeRead) {
    std::string crowd = R"({"success":true,"results":[)";
    for (std::size_t i = 0; i <= RequestLimits::maximumRecords; ++i) crowd += "{},";
    crowd.back() = ']';
    crowd += '}';
    const std::string deep =
        R"({"success":true,"results":)" + std::string(100'000, '[') + std::string(100'000, ']') + "}";
    const std::string cases[] = {"",
                                 "<html>Server Error (500)</html>",
                                 "[]",
                                 "\"text\"",
                                 "null",
                                 R"({"success":true)",
                                 std::string("{\"a\":\"\xFF\"}"),
                                 deep,
                                 crowd};
    for (const std::string& text : cases) {
        const auto result = ParsedAnswer::parse(text);
        EXPECT_FALSE(result->isReadable()) << text.substr(0, 40);
        EXPECT_FALSE(result->success()) << text.substr(0, 40);
        EXPECT_TRUE(result->resultsArray().empty()) << text.substr(0, 40);
        EXPECT_EQ(result->errString().value_or("").rfind("The answer cannot be read: ", 0), 0u) << text.substr(0, 40);
    }
}

}  // namespace
}  // namespace ostrel
