#include "bench/support/Bench.h"
#include "bench/support/SampleRecords.h"
#include "platform/foundation/values/Value.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <simdjson.h>

#include <algorithm>

namespace ostrel {

namespace {

/// As many repetitions as make a measurement of some milliseconds.
int repetitions(std::size_t articles) { return articles >= 1000 ? 10 : 200; }

std::vector<BenchResult> decode(const std::string& name, std::size_t articles, const BenchSettings& settings) {
    const std::string page = samplePage(articles, 1700);
    const simdjson::padded_string padded(page);
    const int times = repetitions(articles);
    std::size_t held = 0, seen = 0;

    const auto ours = [&] {
        return secondsOf([&] {
                   for (int i = 0; i < times; ++i) {
                       const Value document = Value::parse(page);
                       std::vector<Dictionary> records;
                       for (const Value& value : document["results"].elements()) records.emplace_back(value);
                       seen += records.size();
                       held = document.documentBytes() + records.capacity() * sizeof(Dictionary);
                   }
               }) /
               times;
    };
    simdjson::dom::parser parser;
    const auto dom = [&] {
        return secondsOf([&] {
                   for (int i = 0; i < times; ++i) {
                       simdjson::dom::element document;
                       if (parser.parse(padded).get(document) == simdjson::SUCCESS) ++seen;
                   }
               }) /
               times;
    };
    const auto qt = [&] {
        const QByteArray bytes = QByteArray::fromRawData(page.data(), static_cast<qsizetype>(page.size()));
        const int fewer = std::max(1, times / 10);
        return secondsOf([&] {
                   for (int i = 0; i < fewer; ++i) {
                       const QJsonDocument document = QJsonDocument::fromJson(bytes);
                       seen += static_cast<std::size_t>(document.object()["results"].toArray().size());
                   }
               }) /
               fewer;
    };
    auto first = interleaved(name, 1.4, "s", settings.rounds, ours, dom);
    first.note = "a page into records, beside simdjson's DOM parse of the same bytes";
    auto second = interleaved(name + ".qt", 0.1, "s", settings.rounds, ours, qt);
    second.note = "the same, beside QJsonDocument";
    BenchResult memory{.name = name + ".held",
                       .ours = static_cast<double>(held),
                       .peer = static_cast<double>(page.size()),
                       .goal = 1.4,
                       .unit = "bytes",
                       .note = "bytes held for the records, beside the bytes of JSON"};
    if (seen == 0) memory.fault = "nothing was decoded";
    return {first, second, memory};
}

}  // namespace

void addDecodeBenches(std::vector<Bench>& benches) {
    benches.push_back({"decode.50", "a page of 50 articles of about 2 kB into records",
                       [](const BenchSettings& s) { return decode("decode.50", 50, s); }});
    benches.push_back({"decode.1000", "a page of 1,000 articles of about 2 kB into records",
                       [](const BenchSettings& s) { return decode("decode.1000", 1000, s); }});
}

}  // namespace ostrel
