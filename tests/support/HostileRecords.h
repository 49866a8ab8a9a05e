#pragma once

#include <iterator>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace ostrel {

/// The words of a text, between blanks and line ends.
inline std::vector<std::string> words(const std::string& text) {
    std::istringstream stream(text);
    return {std::istream_iterator<std::string>(stream), {}};
}

/// JSON values that no server should send, for any key.
inline const std::vector<std::string> hostileValues = words(R"(
    null true [] {} [{"id":[]}] 0 -1 0.5 1e308 -1e308 30000 99999999999999999999999999
    "" "-7" "NaN" "1e9999" "\u0000\ud83d\ude00\r\n\r"
    "http://192.168.0.1/x" "file:///etc/passwd" "/dev/zero" "http://[::1")");

/// Records as JSON: one without keys; one for each hostile value, which stands under every key; then a few
/// whose values are drawn at random for each key, always the same ones for one `seed`.
inline std::vector<std::string> hostileRecords(const std::string& keys, unsigned seed) {
    const auto recordOf = [&](auto valueFor) {
        std::string members;
        for (const std::string& key : words(keys)) {
            members += members.empty() ? "\"" : ",\"";
            members.append(key).append("\":").append(valueFor());
        }
        return "{" + members + "}";
    };
    std::vector<std::string> records{"{}"};
    for (const std::string& value : hostileValues) records.push_back(recordOf([&] { return value; }));
    std::mt19937 random(seed);
    for (int i = 0; i < 4; ++i)
        records.push_back(recordOf([&] { return hostileValues[random() % hostileValues.size()]; }));
    return records;
}

/// Hostile records of an article, with the keys that screens read, and one whose texts are very long.
inline std::vector<std::string> hostileRecords() {
    auto records = hostileRecords("id title text auth_name auth_id modifie_date liked comment open_comment url "
                                  "images videos comments",
                                  1);
    records.push_back(R"({"id":1,"title":")" + std::string(20'000, 'W') + R"(","text":")" +
                      std::string(200'000, '\x7f') + R"(","auth_name":")" + std::string(20'000, 'i') + "\"}");
    return records;
}

/// Values that a list of pictures, videos or comments may hold: hostile records, and values that are no records.
inline std::vector<std::string> hostileElements() {
    auto elements = hostileRecords("id image thumbnail image_width image_height text video video_width "
                                   "video_height duration auth_name auth_id date",
                                   1);
    elements.insert(elements.end(), {"null", "true", "42", "\"text\"", "[]", "[{}]"});
    return elements;
}

}  // namespace ostrel
