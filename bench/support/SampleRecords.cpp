#include "bench/support/SampleRecords.h"

#include <nlohmann/json.hpp>

namespace ostrel {

namespace {

constexpr const char* sentences[] = {
    "The ferry left the harbour before the market had opened.",
    "We walked along the old wall until the path gave out.",
    "清晨的集市还没有开门，渡船已经离开了港口。",
    "Bread, two tomatoes, a piece of cheese: lunch on the steps of the library.",
    "照片里的光来自对面的窗户。",
    "Nobody had told us that the tower closes when the wind turns east.",
    "It rained so hard that the square became a mirror.",
};

std::string sampleText(std::size_t index, std::size_t bytes) {
    std::string text;
    for (std::size_t i = index; text.size() < bytes; i += 1 + index % 3) {
        if (!text.empty()) text += i % 5 ? " " : "\r\n";
        text += sentences[i % std::size(sentences)];
    }
    return text;
}

}  // namespace

std::string sampleRecord(std::size_t index, std::size_t bytes) {
    const std::size_t size = bytes ? bytes : 20 + (index * 7919) % 900;
    nlohmann::json record{{"id", 1000000 - index},
                          {"title", index % 4 ? sampleText(index, 24) : ""},
                          {"text", sampleText(index, size)},
                          {"auth_name", index % 3 ? "Marta Lind" : "林晓"},
                          {"auth_id", index % 9 + 1},
                          {"modifie_date", "2026-03-04T05:06:07.123Z"},
                          {"liked", index % 120},
                          {"comment", index % 7},
                          {"open_comment", index % 2 == 0},
                          {"url", "http://127.0.0.1/article/" + std::to_string(index)},
                          {"images", nlohmann::json::array()},
                          {"videos", nlohmann::json::array()}};
    return record.dump();
}

std::string samplePage(std::size_t count, std::size_t bytes) {
    std::string page = R"({"success":true,"error":null,"result":null,"results":[)";
    for (std::size_t i = 0; i < count; ++i) page += (i ? "," : "") + sampleRecord(i, bytes);
    return page + R"(],"more":"/article/articles_json.html?before=1"})";
}

}  // namespace ostrel
