#include "platform/foundation/values/Value.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <bit>
#include <cmath>
#include <random>
#include <sstream>
#include <thread>

namespace ostrel {
namespace {

TEST(JsonDocument, RejectsInvalidTextWithASentence) {
    std::vector<std::string> cases = {{"\0", 1}, {"[1]\0", 4}, "\xFF", "\"\xC3\"", "\"\xED\xA0\x80\""};
    std::istringstream lines(
        "\n \n{\n[1,2\n{\"a\":}\n{\"a\" 1}\n{a:1}\n[1,]\n[1 2]\ntru\ntruex\nnul\n\"open\n\"tab\there\"\n"
        "\"\\x\"\n\"\\u12\"\n01\n1.\n.5\n+1\n-\n1e\n0x10\nNaN\n[1]]\n{} {}\n[1] x\n{\"a\":1e999,1e999:2}\n"
        "[1e999,01]\n1e999 1e999");
    for (std::string line; std::getline(lines, line);) cases.push_back(line);
    ASSERT_EQ(cases.size(), 35u);
    for (const std::string& json : cases) {
        std::string error;
        EXPECT_TRUE(Value::parse(json, &error).isAbsent()) << json;
        EXPECT_TRUE(error.ends_with(".") && error.find(' ') != std::string::npos) << json << ": " << error;
    }
}

TEST(JsonDocument, NamesTheLimitThatIsExceeded) {
    std::string error;
    const std::string deep(JsonDocument::maximumDepth + 1, '[');
    Value::parse(deep + std::string(deep.size(), ']'), &error);
    EXPECT_EQ(error, "The text nests deeper than 512 levels.");
    const std::string allowed = deep.substr(1) + std::string(deep.size() - 1, ']');
    EXPECT_EQ(Value::parse(allowed).json(), allowed);

    Value::parse(std::string(JsonDocument::maximumBytes + 1, ' '), &error);
    EXPECT_EQ(error, "The text is longer than 268435456 bytes.");
}

TEST(JsonDocument, EveryCutOfAnAnswerIsRefused) {
    const std::string json =
        R"({"results":[{"id":1,"title":"a\"b\u00e9","liked":-2.5e3,"open":true,"url":null}],"more":""})";
    ASSERT_FALSE(Value::parse("\xEF\xBB\xBF" + json).isAbsent()) << "a byte order mark is allowed";
    for (std::size_t length = 0; length < json.size(); ++length) {
        EXPECT_TRUE(Value::parse(json.substr(0, length)).isAbsent()) << length;
    }
}

TEST(JsonDocument, HoldsAPageOfTextInLittleMoreThanItsLength) {
    const std::string record = R"({"id":1,"title":"t","auth_name":"Ada","text":")" + std::string(1900, 'x') +
                               R"(","images":[{"id":1,"image_width":1024}],"liked":0})";
    std::string json = "[" + record;
    for (int i = 1; i < 200; ++i) json += "," + record;
    json += "]";
    EXPECT_LE(static_cast<double>(Value::parse(json).documentBytes()), 1.4 * static_cast<double>(json.size()));
}

TEST(JsonDocument, CountsContainersBeyondWhatTheTapeStores) {
    constexpr std::size_t zeros = 0xFFFFFF + 2;
    std::string json(2 * zeros + 1, '0');
    for (std::size_t i = 0; i < json.size(); i += 2) json[i] = i == 0 ? '[' : ',';
    json.back() = ']';
    EXPECT_EQ(Value::parse(json).count(), zeros);
}

TEST(JsonDocument, ThreadsParseAndReadAtOnce) {
    const Value shared = Value::parse(R"({"list":[1,2,3]})");
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&shared, t] {
            for (int i = 0; i < 200; ++i) {
                const std::string text(static_cast<std::size_t>(i * 20), static_cast<char>('a' + t));
                EXPECT_EQ(Value::parse("[\"" + text + "\"]").elements().front().string(), text);
                EXPECT_EQ(shared["list"].elements().back().integer(), 3);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
}

using Json = nlohmann::ordered_json;

/// A random document, at most `depth` levels deep.
Json randomJson(std::mt19937_64& random, int depth) {
    const auto below = [&](std::size_t limit) { return static_cast<std::size_t>(random() % limit); };
    const auto text = [&] {
        using namespace std::string_view_literals;
        constexpr std::string_view pieces[] = {"a",
                                               "Z",
                                               "\"",
                                               "\\",
                                               "/",
                                               "\n",
                                               "\t",
                                               "\x01",
                                               "\x7F",
                                               "\0"sv,
                                               "\xC3\xA9",
                                               "\xE6\x96\x87",
                                               "\xF0\x9F\x98\x80",
                                               "1e999",
                                               "{",
                                               ","};
        std::string result;
        for (std::size_t i = below(12); i > 0; --i) result += pieces[below(std::size(pieces))];
        return result;
    };
    switch (below(depth > 0 ? 8 : 6)) {
    case 0: return nullptr;
    case 1: return below(2) == 1;
    case 2: return static_cast<std::int64_t>(random() >> below(64));
    case 3: return static_cast<double>(static_cast<std::int64_t>(random() >> 40)) / 8;
    case 4: {
        const double any = std::bit_cast<double>(random());
        return std::isfinite(any) ? any : 0.5;
    }
    case 5: return text();
    case 6: {
        Json array = Json::array();
        for (std::size_t i = below(6); i > 0; --i) array.push_back(randomJson(random, depth - 1));
        return array;
    }
    default: {
        Json object = Json::object();
        for (std::size_t i = below(6); i > 0; --i) object[text() + std::to_string(i)] = randomJson(random, depth - 1);
        return object;
    }
    }
}

void expectSame(const Value& value, const Json& json) {
    if (json.is_boolean()) {
        ASSERT_EQ(value.type(), Value::Type::boolean);
        ASSERT_EQ(value.boolean(), json.get<bool>());
    } else if (json.is_number()) {
        ASSERT_TRUE(value.isNumber());
        ASSERT_EQ(value.number(), json.get<double>());
        ASSERT_TRUE(json.is_number_float() || value.integer() == json.get<std::int64_t>());
    } else if (json.is_string()) {
        ASSERT_TRUE(value.isString());
        ASSERT_EQ(value.string(), json.get<std::string>());
    } else if (json.is_array()) {
        const auto found = value.elements();
        ASSERT_TRUE(value.isArray());
        ASSERT_EQ(found.size(), json.size());
        for (std::size_t i = 0; i < found.size(); ++i) expectSame(found[i], json[i]);
    } else if (json.is_object()) {
        ASSERT_TRUE(value.isDictionary());
        std::vector<std::string_view> keys;
        for (const auto& [key, member] : json.items()) {
            keys.push_back(key);
            expectSame(value[key], member);
        }
        ASSERT_EQ(value.keys(), keys);
    } else {
        ASSERT_TRUE(value.isNull());
    }
}

TEST(JsonDocument, RandomDocumentsReadAsWhatWasWrittenAndSurviveWriting) {
    const unsigned seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937_64 random(seed);
    for (int round = 0; round < 2000 && !HasFatalFailure(); ++round) {
        Json json = randomJson(random, 5);
        if (round == 0) {  // longer than the texts for which a thread keeps its parser
            json = Json::array({std::string(300'000, 'x')});
            for (int i = 0; i < 2000; ++i) json.push_back(randomJson(random, 3));
        }
        // Without or with blanks; in every second round, characters beyond ASCII are escaped.
        const std::string text = json.dump(round % 3 - 1, ' ', round % 2 == 0);
        SCOPED_TRACE(text.substr(0, 4096));
        std::string error;
        const Value value = Value::parse(text, &error);
        ASSERT_FALSE(value.isAbsent()) << error;
        expectSame(value, json);
        const Value again = Value::parse(value.json());
        ASSERT_TRUE(again == value);
        expectSame(again, json);
    }
}

}  // namespace
}  // namespace ostrel
