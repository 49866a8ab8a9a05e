#pragma once

#include <array>
#include <cstddef>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace ostrel {

/// JSON values that no server should send, for any key.
inline constexpr std::array hostileValues{"null",
                                          "true",
                                          "[]",
                                          "{}",
                                          "[{\"id\":[]}]",
                                          "0",
                                          "-1",
                                          "0.5",
                                          "1e308",
                                          "-1e308",
                                          "30000",
                                          "99999999999999999999999999",
                                          "\"\"",
                                          "\"-7\"",
                                          "\"NaN\"",
                                          "\"1e9999\"",
                                          "\"\\u0000\\ud83d\\ude00\\r\\n\\r\"",
                                          "\"http://192.168.0.1/x\"",
                                          "\"file:///etc/passwd\"",
                                          "\"/dev/zero\"",
                                          "\"http://[::1\""};

/// The keys that screens read of an article, and of an element of its "images", "videos" and "comments".
inline constexpr std::array articleKeys{"id",           "title",  "text",    "auth_name",    "auth_id",
                                        "modifie_date", "liked",  "comment", "open_comment", "url",
                                        "images",       "videos", "comments"};
inline constexpr std::array elementKeys{"id",        "image",   "thumbnail",   "image_width",  "image_height",
                                        "text",      "video",   "video_width", "video_height", "duration",
                                        "auth_name", "auth_id", "date"};

/// Records as JSON: one without keys; one for each hostile value, which stands under every key; then a few
/// whose values are drawn at random for each key, always the same ones for one `seed`.
template <class Keys>
std::vector<std::string> hostileRecords(const Keys& keys, unsigned seed) {
    const auto recordOf = [&](auto valueFor) {
        std::string members;
        for (const std::string_view key : keys) {
            members += members.empty() ? "\"" : ",\"";
            members.append(key).append("\":").append(valueFor());
        }
        return "{" + members + "}";
    };
    std::vector<std::string> records{"{}"};
    for (const char* value : hostileValues) records.push_back(recordOf([&] { return value; }));
    std::mt19937 random(seed);
    for (int i = 0; i < 4; ++i)
        records.push_back(recordOf([&] { return hostileValues[random() % hostileValues.size()]; }));
    return records;
}

/// Hostile records of an article, and one whose texts are very long.
inline std::vector<std::string> hostileRecords(unsigned seed = 1) {
    auto records = hostileRecords(articleKeys, seed);
    records.push_back(R"({"id":1,"title":")" + std::string(20'000, 'W') + R"(","text":")" +
                      std::string(200'000, '\x7f') + R"(","auth_name":")" + std::string(20'000, 'i') + "\"}");
    return records;
}

/// Values that a list of pictures, videos or comments may hold: hostile records, and what is no record at
/// all.
inline std::vector<std::string> hostileElements(unsigned seed = 1) {
    auto elements = hostileRecords(elementKeys, seed);
    elements.insert(elements.end(), {"null", "true", "42", "\"text\"", "[]", "[{}]"});
    return elements;
}

}  // namespace ostrel
