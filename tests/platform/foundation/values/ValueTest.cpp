#include "platform/foundation/values/Value.h"

#include <gtest/gtest.h>

#include <limits>

namespace ostrel {
namespace {

constexpr std::int64_t smallest = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();

TEST(Value, ReadsEveryKindLeniently) {
    using Type = Value::Type;
    using Text = std::optional<std::string>;
    const std::tuple<const char*, Type, Text, std::int64_t, double, bool> cases[] = {
        {"no JSON", Type::absent, std::nullopt, 0, 0, false},
        {"null", Type::null, std::nullopt, 0, 0, false},
        {"true", Type::boolean, "1", 1, 1, true},
        {"false", Type::boolean, "0", 0, 0, false},
        {"42", Type::number, "42", 42, 42, true},
        {"-0.0", Type::number, "-0", 0, 0, false},
        {"2.99", Type::number, "2.99", 2, 2.99, true},
        {"-2.99", Type::number, "-2.99", -2, -2.99, true},
        {"100000.0", Type::number, "100000", 100000, 100000, true},
        {"0.1", Type::number, "0.1", 0, 0.1, true},
        {"1e20", Type::number, "100000000000000000000", largest, 1e20, true},
        {"-1e20", Type::number, "-100000000000000000000", smallest, -1e20, true},
        {"1e21", Type::number, "1e+21", largest, 1e21, true},
        {"0.0000001", Type::number, "1e-07", 0, 1e-7, true},
        {"1e-999", Type::number, "0", 0, 0, false},
        {"-9223372036854775808", Type::number, "-9223372036854775808", smallest, -0x1p63, true},
        {"18446744073709551615", Type::number, "18446744073709551615", largest, 0x1p64, true},
        {"\"7\"", Type::string, "7", 7, 7, true},
        {"\" +12.5 points\"", Type::string, " +12.5 points", 12, 12.5, true},
        {"\"-3e2x\"", Type::string, "-3e2x", -3, -300, true},
        {"\".5\"", Type::string, ".5", 0, 0.5, true},
        {"\"+-5\"", Type::string, "+-5", 0, 0, false},
        {"\"inf\"", Type::string, "inf", 0, 0, false},
        {"\"0x10\"", Type::string, "0x10", 0, 0, false},
        {"\"1e\"", Type::string, "1e", 1, 1, true},
        {"\"99999999999999999999\"", Type::string, "99999999999999999999", largest, 1e20, true},
        {"\"-99999999999999999999\"", Type::string, "-99999999999999999999", smallest, -1e20, true},
        {"\"-1e999\"", Type::string, "-1e999", -1, -std::numeric_limits<double>::max(), true},
        {"\"\"", Type::string, "", 0, 0, false},
        {"\"true\"", Type::string, "true", 0, 0, false},
        {"[1]", Type::array, std::nullopt, 0, 0, false},
        {"{\"a\":1}", Type::dictionary, std::nullopt, 0, 0, false},
    };
    for (const auto& [json, type, text, integer, number, boolean] : cases) {
        SCOPED_TRACE(json);
        const Value value = Value::parse(json);
        EXPECT_EQ(value.type(), type);
        EXPECT_EQ(value.text(), text);
        EXPECT_EQ(value.integer(), integer);
        EXPECT_EQ(value.number(), number);
        EXPECT_EQ(value.boolean(), boolean);
    }
}

TEST(Value, AbsentAnswersEverythingEmpty) {
    const Value absent;
    EXPECT_EQ(absent.count(), 0u);
    EXPECT_TRUE(absent.elements().empty());
    EXPECT_TRUE(absent["key"]["deeper"].isAbsent());
    EXPECT_EQ(absent.json(), "");
    EXPECT_FALSE(absent.isNull());
    EXPECT_FALSE(absent == Value::parse("null"));
}

TEST(Value, NumbersBeyond64BitsKeepTheirTextAndTheRecordSurvives) {
    const Value record = Value::parse(R"({"id": 123456789012345678901234, "big":[ 1e999 ,-18446744073709551616,1.5],)"
                                      R"("text": "1e999: \"1e999", "n":-1E+400})");
    EXPECT_EQ(record["id"].string(), "123456789012345678901234");
    EXPECT_EQ(record["big"].elements().at(0).text(), "1e999");
    EXPECT_EQ(record["big"].elements().at(1).text(), "-18446744073709551616");
    EXPECT_EQ(record["big"].elements().at(2).number(), 1.5);
    EXPECT_EQ(record["text"].string(), "1e999: \"1e999");
    EXPECT_EQ(record["n"].string(), "-1E+400");
}

TEST(Value, FirstOfEqualKeysCounts) {
    const Value value = Value::parse(R"({"a":[1,{"b":2}],"b":1,"b":2})");
    EXPECT_EQ(value["b"].integer(), 1);
    EXPECT_EQ(value.count(), 3u);
    EXPECT_EQ(value.keys(), (std::vector<std::string_view>{"a", "b", "b"}));
}

TEST(Value, OutlivesTheTextAndTheOtherValuesOfItsDocument) {
    Value inner;
    {
        std::string json = R"([{"title":"kept"}])";
        inner = Value::parse(json).elements().front()["title"];
        json.assign(json.size(), 'x');
    }
    EXPECT_EQ(inner.string(), "kept");
}

TEST(Value, EqualityComparesContents) {
    const std::tuple<const char*, const char*, bool> cases[] = {
        {"{\"a\":1,\"b\":[true,null]}", " { \"b\" : [ true , null ] , \"a\" : 1.0 } ", true},
        {"{\"a\":1}", "{\"a\":1,\"b\":1}", false},
        {"{\"a\":1,\"b\":1}", "{\"a\":1,\"c\":1}", false},
        {"{\"a\":1,\"a\":2}", "{\"a\":1}", true},
        {"{\"a\":1,\"a\":2}", "{\"a\":2}", false},
        {"[1,2]", "[2,1]", false},
        {"[1,2]", "[1,2,3]", false},
        {"[]", "{}", false},
        {"1", "\"1\"", false},
        {"1", "true", false},
        {"true", "false", false},
        {"-0.0", "0", true},
        {"9007199254740993", "9007199254740992.0", false},
        {"9223372036854775807", "9223372036854775808.0", false},
        {"9223372036854775808", "9223372036854775808.0", true},
        {"18446744073709551615", "18446744073709551616.0", false},
        {"18446744073709551615", "-1", false},
        {"\"\\u00e9\"", "\"\xC3\xA9\"", true},
    };
    for (const auto& [first, second, areEqual] : cases) {
        const Value a = Value::parse(first), b = Value::parse(second);
        EXPECT_EQ(a == b, areEqual) << first << " and " << second;
        EXPECT_EQ(b == a, areEqual) << second << " and " << first;
        EXPECT_TRUE(a == Value(a)) << first;
    }
}

TEST(Value, OfStringHoldsAnyBytesAndWritesValidJson) {
    const std::string bytes("a\"\\\n\x01\0b\xFF", 8);
    const Value value = Value::ofString(bytes);
    EXPECT_EQ(value.string(), bytes);
    EXPECT_EQ(value.json(), "\"a\\\"\\\\\\n\\u0001\\u0000b\xEF\xBF\xBD\"");
    EXPECT_EQ(Value::ofString("caf\xC3\xA9"), Value::parse("\"caf\xC3\xA9\""));
    EXPECT_TRUE(Value::ofString("").isString());
}

TEST(Value, DictionaryTakesOnlyDictionaries) {
    EXPECT_TRUE(Dictionary::parse("{}"));
    EXPECT_EQ(Dictionary::parse(R"({"id":7})")["id"].text(), "7");
    for (const char* other : {"[]", "null", "\"{}\"", "{", ""}) EXPECT_FALSE(Dictionary::parse(other)) << other;
}

}  // namespace
}  // namespace ostrel
