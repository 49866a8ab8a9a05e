#pragma once

#include "article/media/CaptureMetadata.h"
#include "article/media/NSMov2Mp4.h"
#include "backends/ffmpeg/FfmpegMediaBackend.h"
#include "backends/ffmpeg/file/OutputFile.h"
#include "platform/foundation/runloop/NSThread.h"
#include "platform/foundation/runloop/SystemRunLoop.h"
#include "tests/support/ClipMaker.h"
#include "tests/support/LogCapture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <filesystem>
#include <mutex>

namespace ostrel {

/// Real clips through the real libraries, on a real run loop.
class FfmpegTest : public testing::Test {
protected:
    struct Outcome {
        int finishedCalls = 0;
        std::vector<float> progress;
        float last = -1;
        std::optional<NSError> error;
        bool succeeded() const { return finishedCalls == 1 && !error && last == 1; }
    };

    FfmpegTest() {
        RunLoop::installMain(loop);
        MediaBackend::install(std::make_shared<FfmpegMediaBackend>());
    }
    ~FfmpegTest() override {
        EXPECT_TRUE(NSThread::waitForAll(10)) << "a thread is left";
        MediaBackend::install(nullptr);
        RunLoop::installMain(nullptr);
    }

    /// Converts as the editor does, and waits for the end. `during` is called at every progress, with the session.
    Outcome convert(const std::string& from, const std::string& to,
                    const std::function<void(AVAssetExportSession&, float)>& during = nullptr) {
        Outcome outcome;
        std::mutex mutex;  // the end is told on another thread
        std::atomic<bool> isFinished{false};
        std::shared_ptr<AVAssetExportSession> session;
        session =
            NSMov2Mp4().startConversion(NSURL::fileURLWithPath(from), to,
                                        [&](bool finished, float done, const std::optional<NSError>& error) {
                                            if (!finished) {
                                                if (during && session) during(*session, done);
                                                const std::lock_guard lock(mutex);
                                                outcome.progress.push_back(done);
                                                return;
                                            }
                                            const std::lock_guard lock(mutex);
                                            ++outcome.finishedCalls;
                                            outcome.last = done;
                                            outcome.error = error;
                                            isFinished = true;
                                        });
        EXPECT_TRUE(loop->run([&] { return isFinished.load(); }, 60));
        EXPECT_TRUE(NSThread::waitForAll(10));
        while (loop->runTurn()) {}
        session = nullptr;
        return outcome;
    }

    std::shared_ptr<const AVAsset> asset(const std::string& path) const {
        return AVAsset::assetWithURL(NSURL::fileURLWithPath(path));
    }
    std::shared_ptr<const UIImage> picture(const std::string& path) {
        std::shared_ptr<const UIImage> image;
        float seconds = 0;
        NSMov2Mp4().mp4Information(NSURL::fileURLWithPath(path), image, seconds);
        return image;
    }
    /// Names in a folder, hidden ones too.
    static std::vector<std::string> filesIn(const std::string& folder) {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder))
            names.push_back(entry.path().filename().string());
        std::sort(names.begin(), names.end());
        return names;
    }
    std::string out(const std::string& name = "out.mp4") const { return folder.path(name); }

    std::shared_ptr<SystemRunLoop> loop = std::make_shared<SystemRunLoop>();
    TemporaryFolder folder;
    LogCapture log;
};

}  // namespace ostrel
