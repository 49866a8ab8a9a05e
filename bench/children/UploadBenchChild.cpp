#include "article/server/OstrelServer.h"
#include "bench/support/BenchChild.h"
#include "bench/support/ProcessMeter.h"
#include "platform/foundation/runloop/SystemRunLoop.h"
#include "platform/foundation/values/Value.h"
#include "serverframework/HttpServerFramework.h"

#include <chrono>
#include <cstdio>
#include <optional>
#include <string>

namespace ostrel {

namespace {

constexpr double longestSeconds = 280;

/// A run loop, a server framework and a new account that is signed in.
class Uploader final {
public:
    explicit Uploader(const std::string& address) {
        RunLoop::installMain(loop_);
        HttpServerFramework::Options options;
        options.baseAddress = address;
        options.mediaCacheFolder = "";
        framework_ = HttpServerFramework::create(options);
    }
    ~Uploader() {
        framework_.reset();
        while (loop_->runTurn()) {}
        RunLoop::installMain(nullptr);
    }
    Uploader(const Uploader&) = delete;
    Uploader& operator=(const Uploader&) = delete;

    bool signIn() {
        const auto now = std::chrono::system_clock::now().time_since_epoch().count();
        std::optional<bool> done;
        framework_->signUp("bench " + std::to_string(now), "long enough",
                           [&](const auto& user, const auto&) { done = user != nullptr; });
        loop_->run([&] { return done.has_value(); }, longestSeconds);
        return done.value_or(false);
    }

    /// The answer to the request that `send` sends; none when the request failed.
    template <typename Send>
    std::optional<std::string> answerTo(Send send) {
        std::optional<std::string> text;
        bool isAnswered = false;
        send(framework_->shareServer(), [&](const auto& answer, const auto& error) {
            if (!error && answer) text = answer->string();
            if (error) std::fprintf(stderr, "upload: %s\n", error->c_str());
            isAnswered = true;
        });
        loop_->run([&] { return isAnswered; }, longestSeconds);
        return text;
    }

private:
    std::shared_ptr<SystemRunLoop> loop_ = std::make_shared<SystemRunLoop>();
    std::shared_ptr<HttpServerFramework> framework_;
};

}  // namespace

/// upload <time|memory> <address> <clip> <still>: makes an article, uploads the clip and prints the seconds, or the
/// most memory that was resident; then removes the article.
int runUploadChild(int argc, char** argv) {
    if (argc < 7) return 2;
    const std::string what = argv[3], clip = argv[5], still = argv[6];
    Uploader uploader(argv[4]);
    if (!uploader.signIn()) return 1;
    const auto made = uploader.answerTo([](OstrelServer& server, AnswerHandler handler) {
        server.postURL("article/update_article_json.html", {{"title", "bench"}, {"text", ""}}, handler);
    });
    const auto id = Dictionary::parse(made.value_or(""))["id"].text();
    if (!id) return 1;
    const auto begin = std::chrono::steady_clock::now();
    const auto uploaded = uploader.answerTo([&](OstrelServer& server, AnswerHandler handler) {
        server.postManyDataURL("article/video_update?article_id=" + *id + "&value=0",
                               {{"video.mp4", UploadFile::atPath(clip)},
                                {"thumbnail.jpg", UploadFile::atPath(still)},
                                {"duration", std::string("4")}},
                               handler, [](double) {});
    });
    const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - begin;
    if (!uploaded) return 1;
    std::printf("%.6f\n", what == "memory" ? peakBytes() : passed.count());
    std::fflush(stdout);
    uploader.answerTo(
        [&](OstrelServer& server, AnswerHandler handler) { server.request("article/remove?id=" + *id, handler); });
    return 0;
}

}  // namespace ostrel
