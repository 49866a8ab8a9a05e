#include "tests/ostrelserver/FrameworkTest.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <string>
#include <unistd.h>
#include <vector>

namespace ostrel {
namespace {

class UploadTest : public FrameworkTest {
protected:
    ~UploadTest() override { std::filesystem::remove(file_); }

    /// A file of `bytes` bytes that differ from place to place.
    Data mappedFile(std::size_t bytes) {
        std::ofstream stream(file_, std::ios::binary);
        std::string block(1024 * 1024, '\0');
        for (std::size_t written = 0; written < bytes; written += block.size()) {
            for (std::size_t i = 0; i < block.size(); ++i)
                block[i] = static_cast<char>((i * 31 + written / 97) & 0xFF);
            stream.write(block.data(), static_cast<std::streamsize>(std::min(block.size(), bytes - written)));
        }
        stream.close();
        std::string error;
        const Data data = Data::mapFile(file_.string(), &error);
        EXPECT_TRUE(data) << error;
        return data;
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

    Texts upload(const UploadBody& body, ProgressHandler progress = nullptr) {
        std::optional<Texts> texts;
        client().postManyDataURL(
            "upload", body,
            [&](const auto& answer, const auto& error) {
                texts = Texts{answer, error};
            },
            std::move(progress));
        EXPECT_TRUE(runUntil([&] { return texts.has_value(); }, 60));
        return texts.value_or(Texts{});
    }

    const std::filesystem::path file_ =
        std::filesystem::temp_directory_path() / ("ostrel-upload-" + std::to_string(::getpid()) + ".mp4");
};

TEST_F(UploadTest, aLargeFileArrivesByteByByteWithoutBeingReadIntoMemory) {
    constexpr std::size_t size = std::size_t{100} * 1024 * 1024 + 17;
    const Data film = mappedFile(size);
    server_.on("/upload", ScriptedHttpServer::answer("{}"));
    framework();
    [[maybe_unused]] const std::size_t before = anonymousMemory();
    std::atomic<std::size_t> most{0};
    std::mutex mutex;
    std::vector<double> steps;
    const Texts texts = upload({{"duration", std::string("13")}, {"video.mp4", film}}, [&](double fraction) {
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
    EXPECT_NE(head.find("Content-Disposition: form-data; name=\"duration\"\r\n\r\n13\r\n"), std::string::npos)
        << head;
    EXPECT_NE(head.find("name=\"video.mp4\"; filename=\"video.mp4\"\r\nContent-Type: video/mp4\r\n"),
              std::string::npos)
        << head;
    const std::string tail = "\r\n--" + boundary + "--\r\n";
    EXPECT_EQ(request.bodyBytes, head.size() + size + tail.size());
    EXPECT_EQ(request.bodyFingerprint, fingerprint(tail, fingerprint(film.view(), fingerprint(head))));
}

TEST_F(UploadTest, namesTheFilesAndTheirTypes) {
    server_.on("/upload", ScriptedHttpServer::answer("{}"));
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

TEST_F(UploadTest, aFileThatIsNoneIsAnErrorWithoutARequest) {
    const Texts texts = upload({{"video.mp4", Data()}});
    EXPECT_EQ(texts.error, "The file \"video.mp4\" cannot be read.");
    EXPECT_EQ(server_.connectionCount(), 0);
}

TEST_F(UploadTest, aRepeatedUploadBeginsAnew) {
    const Data film = mappedFile(300'000);
    server_.on("/upload", ScriptedHttpServer::answer("", 307, "Location: /there\r\n"));
    server_.on("/there", ScriptedHttpServer::answer("{}"));
    EXPECT_FALSE(upload({{"video.mp4", film}}).error);
    const auto requests = server_.requests();
    ASSERT_EQ(requests.size(), 2u);
    EXPECT_EQ(requests[1].target, "/there");
    EXPECT_EQ(requests[1].bodyBytes, requests[0].bodyBytes);
    EXPECT_EQ(requests[1].bodyFingerprint, requests[0].bodyFingerprint);
}

TEST_F(UploadTest, aRefusalBeforeTheEndGivesTheServersSentence) {
    const Data film = mappedFile(20'000'000);
    auto refusal = ScriptedHttpServer::answer(R"({"success":false,"error":"The file is too large."})", 413);
    server_.refuseBody("/upload", refusal);
    bool finished = false;
    const Texts texts = upload({{"video.mp4", film}}, [&](double fraction) { finished = fraction == 1; });
    EXPECT_EQ(texts.error, "The file is too large.");
    EXPECT_EQ(texts.answer, R"({"success":false,"error":"The file is too large."})");
}

TEST_F(UploadTest, cancellingEndsItWithAnError) {
    Answer hanging;
    hanging.hangs = true;
    server_.on("/upload", hanging);
    std::optional<std::string> error;
    const auto transfer = client().postManyDataURL(
        "upload", {{"text", std::string("t")}}, [&](const auto&, const auto& text) { error = text; },
        nullptr);
    ASSERT_TRUE(runUntil([&] { return server_.requestCount("/upload") == 1; }));
    transfer->cancel();
    transfer->cancel();
    ASSERT_TRUE(runUntil([&] { return error.has_value(); }));
    EXPECT_EQ(error, "cancelled");
}

}  // namespace
}  // namespace ostrel
