#include "platform/foundation/runloop/NSProgress.h"
#include "tests/serverframework/FrameworkTest.h"

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <new>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace ostrel {
namespace {

class UploadTest : public FrameworkTest {
protected:
    /// A mapped file of `size` bytes that differ from place to place.
    Data mappedFile(std::size_t size) {
        std::string bytes(size, '\0');
        for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>((i * 31 + i / 97) & 0xFF);
        return Data::mapFile(cacheFolder_.write("clip.mp4", bytes));
    }

    /// Memory of this process that is backed by no file, in bytes.
    static std::size_t anonymousMemory() {
        std::ifstream status("/proc/self/status");
        for (std::string line; std::getline(status, line);) {
            if (line.rfind("RssAnon:", 0) == 0) return std::stoull(line.substr(8)) * 1024;
        }
        ADD_FAILURE() << "no RssAnon";
        return 0;
    }
};

TEST_F(UploadTest, aLargeFileArrivesByteByByteWithoutBeingReadIntoMemory) {
    constexpr std::size_t size = std::size_t{100} * 1024 * 1024 + 17;
    const Data video = mappedFile(size);
    server_.on("/upload", answer("{}"));
    framework();
    [[maybe_unused]] const std::size_t before = anonymousMemory();
    std::atomic<std::size_t> most{0};
    std::mutex mutex;
    std::vector<double> steps;
    const Texts texts = upload({{"duration", std::string("13")}, {"video.mp4", video}}, [&](double fraction) {
        const std::lock_guard lock(mutex);
        steps.push_back(fraction);
        most = std::max(most.load(), anonymousMemory());
    });
    EXPECT_FALSE(texts.error) << texts.error.value_or("");
#if !defined(__SANITIZE_THREAD__)
    // ThreadSanitizer keeps four bytes of its own for every byte that is read.
    EXPECT_LT(most - std::min(before, most.load()), size / 2);
#endif

    const std::lock_guard lock(mutex);
    ASSERT_FALSE(steps.empty());
    EXPECT_EQ(steps.back(), 1);
    EXPECT_TRUE(std::is_sorted(steps.begin(), steps.end()));
    EXPECT_EQ(std::count(steps.begin(), steps.end(), 1.0), 1);
    EXPECT_GE(steps.front(), 0);

    const Request request = server_.requests().back();
    const std::string type = header(request, "content-type");
    ASSERT_EQ(type.rfind("multipart/form-data; boundary=", 0), 0u) << type;
    const std::string boundary = type.substr(30);
    const std::size_t begin = request.bodyBegin.find("\r\n\r\n", request.bodyBegin.find("video.mp4")) + 4;
    const std::string head = request.bodyBegin.substr(0, begin);
    EXPECT_NE(head.find("name=\"video.mp4\"; filename=\"video.mp4\"\r\nContent-Type: video/mp4\r\n"), std::string::npos)
        << head;
    const std::string tail = "\r\n--" + boundary + "--\r\n";
    EXPECT_EQ(request.bodyBytes, head.size() + size + tail.size());
    EXPECT_EQ(request.bodyFingerprint, fingerprint(tail, fingerprint(video.view(), fingerprint(head))));
}

TEST_F(UploadTest, namesTheFilesAndTheirTypes) {
    server_.on("/upload", answer("{}"));
    upload({{"image.jpg", Data::copy(std::string_view("\xFF\xD8"))},
            {"empty.bin", Data::copy(std::string_view(""))},
            {"text", std::string("a\r\n--b\xE4\xBD\xA0")}});
    const std::string body = server_.requests().back().bodyBegin;
    for (const char* part : {"filename=\"image.jpg\"\r\nContent-Type: image/jpeg\r\n\r\n\xFF\xD8\r\n",
                             "filename=\"empty.bin\"\r\nContent-Type: application/octet-stream\r\n\r\n\r\n",
                             "name=\"text\"\r\n\r\na\r\n--b\xE4\xBD\xA0\r\n"}) {
        EXPECT_NE(body.find(part), std::string::npos) << part << " in " << body;
    }
}

TEST_F(UploadTest, aRepeatedUploadBeginsAnew) {
    const Data video = mappedFile(300'000);
    server_.on("/upload", answer("", 307, "Location: /there\r\n"));
    server_.on("/there", answer("{}"));
    EXPECT_FALSE(upload({{"video.mp4", video}}).error);
    const auto requests = server_.requests();
    ASSERT_EQ(requests.size(), 2u);
    EXPECT_EQ(requests[1].target, "/there");
    EXPECT_EQ(requests[1].bodyBytes, requests[0].bodyBytes);
    EXPECT_EQ(requests[1].bodyFingerprint, requests[0].bodyFingerprint);
}

TEST_F(UploadTest, aRefusalBeforeTheEndGivesTheServersSentence) {
    const Data video = mappedFile(20'000'000);
    const std::string refusal = R"({"success":false,"error":"The file is too large."})";
    server_.refuseBody("/upload", answer(refusal, 413));
    const Texts texts = upload({{"video.mp4", video}});
    EXPECT_EQ(texts.error, "The file is too large.");
    EXPECT_EQ(texts.answer, refusal);
}

TEST_F(UploadTest, everyFaultEndsItWithAnError) {
    const Answer whole = answer(R"({"id":1})");
    const struct {
        const char* name;
        Answer script;
        /// The whole answer does, and with it all of the body.
        bool arrives;
    } faults[] = {
        {"nothing", Answer{}, false},
        {"cut in the head", cut(whole.bytes.size() - 20, whole), false},
        {"cut in the body", cut(3, whole), false},
        {"garbage", raw("\x16\x03\x01 not a web server\r\n\r\n"), false},
        {"never", hanging(), false},
        {"500", answer("<html>", 500), true},
        {"507", answer(R"({"success":false,"error":"Full."})", 507), true},
    };
    start(shortLimits());
    for (const auto& fault : faults) {
        server_.on("/upload", fault.script);
        std::atomic<double> last{0};
        const Texts texts =
            upload({{"image.jpg", Data::copy(std::string(400'000, 'x'))}}, [&](double fraction) { last = fraction; });
        EXPECT_TRUE(texts.error) << fault.name;
        EXPECT_EQ(last == 1, fault.arrives) << fault.name;
        EXPECT_TRUE(NSProgress::published().empty()) << fault.name;
    }
}

TEST_F(UploadTest, whatWaitsIsNotMadeYetAndAnotherUserNeverSendsIt) {
    server_.on("/upload", hanging());
    server_.on("/account/sign_out", answer(R"({"success":true,"user":null})"));
    signIn();
    std::atomic<int> made{0};
    int cancelled = 0;
    constexpr int count = 30, lanes = 6;
    std::vector<std::shared_ptr<Transfer>> transfers;
    for (int i = 0; i < count; ++i) {
        const UploadFile file = UploadFile::madeBy([&made] {
            ++made;
            EXPECT_FALSE(RunLoop::main().isMainThread());
            return Data::copy(std::string(300'000, 'x'));
        });
        transfers.push_back(client().postManyDataURL(
            "upload", {{"image.jpg", file}}, [&](const auto&, const auto& error) { cancelled += error == "cancelled"; },
            nullptr));
    }
    ASSERT_TRUE(runUntil([&] { return server_.requestCount("/upload") == lanes; }));
    EXPECT_EQ(made, lanes);
    const auto shown = NSProgress::published();
    ASSERT_EQ(shown.size(), static_cast<std::size_t>(lanes));
    EXPECT_NE(shown[0]->localizedDescription().find("image.jpg"), std::string::npos);
    EXPECT_TRUE(shown[0]->fractionCompleted());

    framework().signOut();
    shown[0]->cancel();
    // Any of the six may be the one that was shown first.
    for (int i = 0; i < lanes; ++i) transfers[static_cast<std::size_t>(i)]->cancel();
    ASSERT_TRUE(runUntil([&] { return cancelled == count; })) << cancelled;
    EXPECT_EQ(server_.requestCount("/upload"), static_cast<std::size_t>(lanes));
    EXPECT_TRUE(NSProgress::published().empty());
}

TEST_F(UploadTest, cancellingAtAnyMomentEndsEachOnce) {
    server_.on("/upload", answer("{}"));
    framework();
    constexpr int count = 120;
    std::vector<int> calls(count, 0);
    std::vector<std::shared_ptr<Transfer>> transfers;
    std::mt19937 random(5);
    for (int i = 0; i < count; ++i) {
        const auto bytes = random() % 600'000;
        const UploadFile file = UploadFile::madeBy([bytes] { return Data::copy(std::string(bytes, 'x')); });
        transfers.push_back(client().postManyDataURL(
            "upload", {{"image.jpg", file}},
            [&calls, i](const auto&, const auto&) { ++calls[static_cast<std::size_t>(i)]; }, [](double) {}));
    }
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 3; ++thread) {
        threads.emplace_back([&transfers, thread] {
            std::mt19937 own(static_cast<unsigned>(thread));
            for (int i = 0; i < count; ++i) {
                if (own() % 3 == 0) transfers[own() % count]->cancel();
                std::this_thread::sleep_for(std::chrono::microseconds(own() % 1500));
            }
        });
    }
    runUntil([] { return false; }, 0.1);
    framework_.reset();
    for (std::thread& thread : threads) thread.join();
    while (loop_->runTurn()) {}
    EXPECT_EQ(calls, std::vector<int>(count, 1));
}

TEST_F(UploadTest, filesAreReadWhenTheirTurnComes) {
    server_.on("/upload", answer("{}"));
    const std::string path = cacheFolder_.write("IMG 1.mp4", std::string(500'000, 'f'));
    EXPECT_FALSE(upload({{"video.mp4", UploadFile::atPath(path)}}).error);
    EXPECT_NE(server_.requests().back().bodyBegin.find("filename=\"video.mp4\""), std::string::npos);
    for (const UploadPart& none :
         {UploadPart(Data()), UploadPart(UploadFile::atPath(path + ".gone")),
          UploadPart(UploadFile::atPath(cacheFolder_.path())), UploadPart(UploadFile::jpegOf(nullptr, 0.7)),
          UploadPart(UploadFile::madeBy([] { return Data(); })),
          UploadPart(UploadFile::madeBy([]() -> Data { throw std::bad_alloc(); }))})
        EXPECT_EQ(upload({{"video.mp4", none}}).error, "The file \"video.mp4\" cannot be read.");
    EXPECT_EQ(server_.requestCount("/upload"), 1u) << "without a request";

    // Cut while the first part of the body waits to be made.
    const UploadFile cutting = UploadFile::madeBy([&path] {
        std::filesystem::resize_file(path, 1000);
        return Data::copy("x");
    });
    EXPECT_EQ(upload({{"a.mp4", UploadFile::atPath(path)}, {"b.jpg", cutting}}).error,
              "The file \"a.mp4\" changed while it was sent.");
}

}  // namespace
}  // namespace ostrel
