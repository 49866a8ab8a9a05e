#include "platform/foundation/values/Value.h"

#include <gtest/gtest.h>

#include <bit>
#include <random>
#include <thread>
#include <variant>

namespace ostrel {
namespace {

TEST(JsonDocument, RefusesWhatIsNoJsonWithASentence) {
    const std::string deep(JsonDocument::maximumDepth + 1, '[');
    const std::string cases[] = {
        "",
        " ",
        "{",
        "[1,2",
        "{\"a\":}",
        "{\"a\" 1}",
        "{a:1}",
        "[1,]",
        "[1 2]",
        "tru",
        "truex",
        "nul",
        "\"open",
        "\"tab\there\"",
        "\"\\x\"",
        "\"\\u12\"",
        "01",
        "1.",
        ".5",
        "+1",
        "-",
        "1e",
        "0x10",
        "NaN",
        "[1]]",
        "{} {}",
        "[1] x",
        "\xFF",
        "\"\xC3\"",
        "\"\xED\xA0\x80\"",
        "{\"a\":1e999,1e999:2}",
        "[1e999,01]",
        "1e999 1e999",
        std::string("\0", 1),
        std::string("[1]\0", 4),
        deep + std::string(deep.size(), ']'),
    };
    for (const std::string& json : cases) {
        SCOPED_TRACE(json.substr(0, 40));
        std::string error;
        EXPECT_TRUE(Value::parse(json, &error).isAbsent());
        EXPECT_TRUE(error.ends_with(".") && error.find(' ') != std::string::npos) << error;
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
    ASSERT_FALSE(Value::parse(json).isAbsent());
    for (std::size_t length = 0; length < json.size(); ++length) {
        EXPECT_TRUE(Value::parse(json.substr(0, length)).isAbsent()) << length;
    }
}

TEST(JsonDocument, AllowsAByteOrderMark) { EXPECT_EQ(Value::parse("\xEF\xBB\xBF[1]").count(), 1u); }

TEST(JsonDocument, LongTextsAndShortOnesReadTheSame) {
    for (const std::size_t records : {3u, 20'000u}) {
        std::string json = "[";
        for (std::size_t i = 0; i < records; ++i) {
            json += (i ? "," : "") +
                    ("{\"id\":" + std::to_string(i) + ",\"t\":\"\\n" + std::string(i % 60, 'x') + "\"}");
        }
        json += "]";
        const auto elements = Value::parse(json).elements();
        ASSERT_EQ(elements.size(), records);
        for (std::size_t i = 0; i < records; ++i) {
            ASSERT_EQ(elements[i]["id"].integer(), static_cast<std::int64_t>(i));
            ASSERT_EQ(elements[i]["t"].string(), "\n" + std::string(i % 60, 'x'));
        }
    }
}

TEST(JsonDocument, HoldsAPageOfTextInLittleMoreThanItsLength) {
    std::string json = "[";
    for (int i = 0; i < 200; ++i) {
        json += std::string(i ? "," : "") + R"({"id":1,"title":"t","auth_name":"Ada","text":")" +
                std::string(1900, 'x') + R"(","images":[{"id":1,"image_width":1024}],"liked":0})";
    }
    json += "]";
    EXPECT_LE(static_cast<double>(Value::parse(json).documentBytes()),
              1.4 * static_cast<double>(json.size()));
}

TEST(JsonDocument, CountsContainersBeyondWhatTheTapeStores) {
    constexpr std::size_t zeros = 0xFFFFFF + 2;
    std::string json = "[0";
    json.reserve(2 * zeros + 2);
    for (std::size_t i = 1; i < zeros; ++i) json += ",0";
    json += "]";
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

/// A plain tree to compare with.
struct Model {
    using Members = std::vector<std::pair<std::string, Model>>;
    std::variant<std::nullptr_t, bool, std::int64_t, double, std::string, std::vector<Model>, Members>
        content;
};

class Generator final {
public:
    explicit Generator(unsigned seed) : random_(seed) {}

    Model model(int depth) {
        switch (below(depth > 0 ? 7 : 5)) {
        case 0: return {nullptr};
        case 1: return {below(2) == 1};
        case 2: return {static_cast<std::int64_t>(bits() >> below(64))};
        case 3: return {real()};
        case 4: return {text()};
        case 5: {
            std::vector<Model> elements(below(6));
            for (Model& element : elements) element = model(depth - 1);
            return {std::move(elements)};
        }
        default: {
            Model::Members members;
            for (std::size_t i = below(6); i > 0; --i)
                members.emplace_back(text() + std::to_string(i), model(depth - 1));
            return {std::move(members)};
        }
        }
    }

    /// JSON text with random blanks and random escapes.
    void write(std::string& out, const Model& model) {
        blanks(out);
        if (const auto* boolean = std::get_if<bool>(&model.content)) {
            out += *boolean ? "true" : "false";
        } else if (const auto* integer = std::get_if<std::int64_t>(&model.content)) {
            out += std::to_string(*integer);
        } else if (const auto* number = std::get_if<double>(&model.content)) {
            char digits[40];
            std::snprintf(digits, sizeof digits, "%.17g", *number);
            out += digits;
        } else if (const auto* string = std::get_if<std::string>(&model.content)) {
            quote(out, *string);
        } else if (const auto* elements = std::get_if<std::vector<Model>>(&model.content)) {
            out += '[';
            for (const Model& element : *elements) {
                if (&element != elements->data()) out += ',';
                write(out, element);
            }
            blanks(out);
            out += ']';
        } else if (const auto* members = std::get_if<Model::Members>(&model.content)) {
            out += '{';
            for (const auto& member : *members) {
                if (&member != members->data()) out += ',';
                blanks(out);
                quote(out, member.first);
                blanks(out);
                out += ':';
                write(out, member.second);
            }
            blanks(out);
            out += '}';
        } else {
            out += "null";
        }
        blanks(out);
    }

private:
    std::uint64_t bits() { return random_(); }
    std::size_t below(std::size_t limit) { return bits() % limit; }

    double real() {
        double value;
        do {
            value = std::bit_cast<double>(bits());
        } while (!(value - value == 0));  // infinities and NaN are no JSON
        return below(2) ? value : static_cast<double>(static_cast<std::int64_t>(bits() >> 40)) / 8;
    }

    std::string text() {
        static const std::string pieces[] = {"a",
                                             "Z",
                                             "\"",
                                             "\\",
                                             "/",
                                             "\n",
                                             "\t",
                                             "\x01",
                                             "\x7F",
                                             std::string("\0", 1),
                                             "\xC3\xA9",
                                             "\xE6\x96\x87",
                                             "\xF0\x9F\x98\x80",
                                             "1e999",
                                             "{",
                                             ","};
        std::string text;
        for (std::size_t i = below(12); i > 0; --i) text += pieces[below(std::size(pieces))];
        return text;
    }

    void blanks(std::string& out) {
        while (below(4) == 0) out += " \t\r\n"[below(4)];
    }

    void quote(std::string& out, const std::string& text) {
        out += '"';
        for (const char c : text) {
            const auto byte = static_cast<unsigned char>(c);
            if (byte < 0x20 || (byte < 0x7F && below(8) == 0)) {
                char escape[8];
                std::snprintf(escape, sizeof escape, "\\u%04X", byte);
                out += escape;
            } else {
                if (c == '"' || c == '\\') out += '\\';
                out += c;
            }
        }
        out += '"';
    }

    std::mt19937_64 random_;
};

void expectSame(const Value& value, const Model& model) {
    if (const auto* boolean = std::get_if<bool>(&model.content)) {
        ASSERT_EQ(value.type(), Value::Type::boolean);
        ASSERT_EQ(value.boolean(), *boolean);
    } else if (const auto* integer = std::get_if<std::int64_t>(&model.content)) {
        ASSERT_TRUE(value.isNumber());
        ASSERT_EQ(value.integer(), *integer);
    } else if (const auto* number = std::get_if<double>(&model.content)) {
        ASSERT_TRUE(value.isNumber());
        ASSERT_EQ(value.number(), *number);
    } else if (const auto* string = std::get_if<std::string>(&model.content)) {
        ASSERT_TRUE(value.isString());
        ASSERT_EQ(value.string(), *string);
    } else if (const auto* elements = std::get_if<std::vector<Model>>(&model.content)) {
        const auto found = value.elements();
        ASSERT_TRUE(value.isArray());
        ASSERT_EQ(found.size(), elements->size());
        for (std::size_t i = 0; i < found.size(); ++i) expectSame(found[i], (*elements)[i]);
    } else if (const auto* members = std::get_if<Model::Members>(&model.content)) {
        const auto keys = value.keys();
        ASSERT_TRUE(value.isDictionary());
        ASSERT_EQ(keys.size(), members->size());
        for (std::size_t i = 0; i < keys.size(); ++i) {
            ASSERT_EQ(keys[i], (*members)[i].first);
            expectSame(value[keys[i]], (*members)[i].second);
        }
    } else {
        ASSERT_TRUE(value.isNull());
    }
}

TEST(JsonDocument, RandomDocumentsReadAsTheirModelAndSurviveWriting) {
    const unsigned seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    Generator generator(seed);
    for (int round = 0; round < 2000; ++round) {
        const Model model = generator.model(5);
        std::string json;
        generator.write(json, model);
        std::string error;
        const Value value = Value::parse(json, &error);
        ASSERT_FALSE(value.isAbsent()) << error << "\n" << json;
        expectSame(value, model);
        const Value again = Value::parse(value.json());
        ASSERT_TRUE(again == value) << json;
        expectSame(again, model);
        if (HasFatalFailure()) FAIL() << json;
    }
}

}  // namespace
}  // namespace ostrel
