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
#include <cerrno>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <functional>
#include <mutex>
#include <sstream>

namespace ostrel {

/// System calls that tests watch and let fail. `mayDo` runs on the export's thread before each call, with the call's
/// number; when it returns false the call fails with `number`.
class WatchedFiles final : public OutputFiles {
public:
    enum class Call : std::uint8_t { open, write, synchronise, link, rename };
    using MayDo = std::function<bool(Call call, int number)>;
    explicit WatchedFiles(MayDo mayDo, bool hasUnnamed = true, int number = ENOSPC)
        : mayDo_(std::move(mayDo)), hasUnnamed_(hasUnnamed), number_(number) {}

    int openUnnamed(const std::string& place) override {
        if (hasUnnamed_) return fails(Call::open) ? -1 : OutputFiles::openUnnamed(place);
        errno = EOPNOTSUPP;
        return -1;
    }
    int openTemporary(std::string& pattern) override {
        return fails(Call::open) ? -1 : OutputFiles::openTemporary(pattern);
    }
    long write(int descriptor, const std::uint8_t* bytes, std::size_t count, std::int64_t offset) override {
        // A full disk first takes the bytes that still fit.
        if (!isFull_ && fails(Call::write)) {
            isFull_ = true;
            if (number_ == ENOSPC && count > 1) return OutputFiles::write(descriptor, bytes, count / 2, offset);
        }
        errno = number_;
        return isFull_ ? -1 : OutputFiles::write(descriptor, bytes, count, offset);
    }
    int synchronise(int descriptor) override {
        return fails(Call::synchronise) ? -1 : OutputFiles::synchronise(descriptor);
    }
    int link(int descriptor, const std::string& path) override {
        return fails(Call::link) ? -1 : OutputFiles::link(descriptor, path);
    }
    int rename(const std::string& from, const std::string& to) override {
        return fails(Call::rename) ? -1 : OutputFiles::rename(from, to);
    }

private:
    bool fails(Call call) {
        if (mayDo_(call, calls_++)) return false;
        errno = number_;
        return true;
    }
    const MayDo mayDo_;
    const bool hasUnnamed_;
    const int number_;
    int calls_ = 0;
    bool isFull_ = false;
};

/// Real clips through the real libraries, on a real run loop.
class FfmpegTest : public testing::Test {
protected:
    struct Outcome {
        int finishedCalls = 0;
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

    /// Converts as the editor does, and waits for the end.
    Outcome convert(const std::string& from, const std::string& to) {
        Outcome outcome;
        // The end is reported on another thread.
        std::mutex mutex;
        std::atomic<bool> isFinished{false};
        NSMov2Mp4().convertMovSourceURL(NSURL::fileURLWithPath(from), to,
                                        [&](bool finished, float done, const std::optional<NSError>& error) {
                                            if (!finished) return;
                                            const std::lock_guard lock(mutex);
                                            ++outcome.finishedCalls;
                                            outcome.last = done;
                                            outcome.error = error;
                                            isFinished = true;
                                        });
        EXPECT_TRUE(loop->run([&] { return isFinished.load(); }, 60));
        EXPECT_TRUE(NSThread::waitForAll(10));
        while (loop->runTurn()) {}
        return outcome;
    }
    /// Exports with one preset and waits for the end; `started` gets the running session. Returns its final status.
    AVAssetExportSessionStatus exportAs(std::string_view preset, const std::string& from,
                                        const std::function<void(AVAssetExportSession&)>& started = nullptr) const {
        AVAssetExportSession session(asset(from), std::string(preset));
        session.setOutputURL(NSURL::fileURLWithPath(out()));
        session.setOutputFileType(AVFileTypeMPEG4);
        session.exportAsynchronouslyWithCompletionHandler([] {});
        if (started) started(session);
        EXPECT_TRUE(NSThread::waitForAll(60));
        EXPECT_EQ(session.status() == AVAssetExportSessionStatus::cancelled,
                  session.error() && session.error()->code == ECANCELED);
        return session.status();
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
    /// The sorted names in a folder, hidden ones too.
    static std::vector<std::string> filesIn(const std::string& folder) {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder))
            names.push_back(entry.path().filename().string());
        std::sort(names.begin(), names.end());
        return names;
    }
    static std::string contentOf(const std::string& path) {
        std::ostringstream text;
        text << std::ifstream(path, std::ios::binary).rdbuf();
        return text.str();
    }
    /// Lets `mayDo` watch the system calls of the following conversions; see WatchedFiles.
    static void watch(WatchedFiles::MayDo mayDo, bool hasUnnamed = true, int number = ENOSPC) {
        MediaBackend::install(
            std::make_shared<FfmpegMediaBackend>(std::make_shared<WatchedFiles>(std::move(mayDo), hasUnnamed, number)));
    }
    std::string out(const std::string& name = "out.mp4") const { return folder.path(name); }

    std::shared_ptr<SystemRunLoop> loop = std::make_shared<SystemRunLoop>();
    TemporaryFolder folder;
    LogCapture log;
};

}  // namespace ostrel
