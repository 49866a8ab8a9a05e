#include "backends/qt/QtPlatform.h"
#include "bench/support/Bench.h"
#include "bench/support/BenchChild.h"
#include "bench/support/ListBenchWindow.h"
#include "bench/support/ProcessMeter.h"
#include "bench/support/SampleRecords.h"
#include "platform/foundation/runloop/NSLog.h"
#include "serverframework/HttpServerFramework.h"
#include "tests/support/ScriptedHttpServer.h"

#include <QElapsedTimer>
#include <QGuiApplication>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <iterator>

namespace ostrel {

namespace {

constexpr const char* firstPage = "/article/articles_json.html";
constexpr std::size_t sampleCount = 20;
constexpr std::size_t mebibyte = std::size_t{1} << 20;

std::string repeated(std::string_view text, std::size_t times) {
    std::string result;
    result.reserve(text.size() * times);
    for (std::size_t i = 0; i < times; ++i) result += text;
    return result;
}

std::string page(const std::string& records) {
    return R"({"success":true,"results":[)" + records + R"(],"more":null})";
}

struct BadAnswer {
    const char* name;
    std::function<ScriptedHttpServer::Answer()> make;
};

ScriptedHttpServer::Answer text(const std::string& body) { return ScriptedHttpServer::answer(body); }

// The longest answers are just below the limit of an answer (32 MiB), because parsing them takes the longest time.
const BadAnswer badAnswers[] = {
    {"nothing", [] { return ScriptedHttpServer::Answer{}; }},
    {"half an answer",
     [] {
         auto half = text(samplePage(sampleCount, 2000));
         half.cutAfter = half.bytes.size() / 2;
         return half;
     }},
    {"no JSON", [] { return text(repeated("<p>busy</p>", mebibyte)); }},
    {"no UTF-8", [] { return text(page(repeated("\xff\xfe", 8 * mebibyte))); }},
    {"the wrong types", [] { return text(R"({"success":[],"results":{"id":1},"more":7})"); }},
    {"records of the wrong types",
     [] {
         return text(page(repeated(R"({"id":"x","title":7,"text":[1],"auth_id":1e400,"images":3},)", 100'000) + "{}"));
     }},
    {"numbers beyond 64 bits", [] { return text(page(R"({"id":123456789012345678901234567890,"auth_id":-1e999})")); }},
    {"31 MiB of numbers", [] { return text(page(repeated("1,", 15 * mebibyte + mebibyte / 2) + "1")); }},
    {"31 MiB of records", [] { return text(page(repeated(R"({"id":1},)", 31 * mebibyte / 9) + "{}")); }},
    {"200 MB",
     [] {
         auto endless = ScriptedHttpServer::Answer{
             .bytes = "HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nConnection: close\r\n\r\n"};
         endless.filling = std::string(mebibyte, '1');
         endless.fillings = 200;
         endless.closes = true;
         return endless;
     }},
    {"100,000 levels", [] { return text(page(repeated("[", 100'000) + repeated("]", 100'000))); }},
};

}  // namespace

int runAnswersChild(int argc, char** argv) {
    QGuiApplication application(argc, argv);
    QtPlatform::install({});
    if (argc < 4) return 2;
    const std::size_t which = std::stoull(argv[3]);
    if (which >= std::size(badAnswers)) return 2;
    ScriptedHttpServer server;
    server.on(firstPage, text(samplePage(sampleCount, 2000)));
    auto framework = HttpServerFramework::create({.baseAddress = server.address(), .mediaCacheFolder = ""});
    ListBenchWindow bench(framework, sampleCount, false);
    if (!bench.open()) return 1;
    server.on(firstPage, badAnswers[which].make());

    double longest = 0;
    bool isDealtWith = false;
    setLogSink([&](std::string_view) { isDealtWith = true; });
    const auto turn = [&](const std::function<void()>& change) {
        const double before = threadSeconds();
        change();
        QCoreApplication::processEvents();
        longest = std::max(longest, threadSeconds() - before);
    };
    const auto isOnScreen = [&] { return bench.list().articlesArray().size() != sampleCount; };
    turn([&] { bench.list().reloadInformationFromServer(false); });
    QElapsedTimer since;
    since.start();
    while (!isDealtWith && !isOnScreen() && since.elapsed() < 20'000) turn([] {});
    isDealtWith = isDealtWith || isOnScreen();
    for (since.restart(); since.elapsed() < 500;) turn([] {});
    setLogSink(nullptr);
    if (!isDealtWith) return 1;
    std::printf("%.9g\n", longest * 1000);
    return 0;
}

void addAnswerBench(std::vector<Bench>& benches) {
    benches.push_back(
        {"answers.bad", "the longest turn of the main loop while an answer arrives that is none",
         [](const BenchSettings& settings) {
             std::vector<BenchResult> results;
             for (std::size_t i = 0; i < std::size(badAnswers); ++i) {
                 double least = -1;
                 for (int round = 0; round < settings.rounds; ++round) {
                     const auto measured = childMeasure(BenchRenderer::software, {"answers", std::to_string(i)});
                     if (!measured) continue;
                     least = least < 0 ? *measured : std::min(least, *measured);
                 }
                 results.push_back({.name = std::string("answers.bad: ") + badAnswers[i].name,
                                    .ours = least,
                                    .peer = 50,
                                    .goal = 1,
                                    .unit = "ms",
                                    .note = "the longest turn of the main loop (processor time), beside 50 ms",
                                    .fault = least < 0 ? "the list could not be shown" : ""});
             }
             return results;
         }});
}

}  // namespace ostrel
