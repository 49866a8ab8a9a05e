#pragma once

#include "platform/media/AVAssetExportSession.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace ostrel {

/// An export that goes as the test says.
class ScriptedExport final : public MediaExport {
public:
    void start(std::function<void()> completion) override {
        state = AVAssetExportSessionStatus::exporting;
        completion_ = std::move(completion);
    }
    void cancel() override { isCancelled = true; }
    AVAssetExportSessionStatus status() const override { return state; }
    float progress() const override { return done; }
    std::optional<NSError> error() const override { return failure; }

    /// Calls the completion, on the calling thread; for the last time when the status is final.
    void complete(AVAssetExportSessionStatus status, std::optional<NSError> error = std::nullopt) {
        state = status;
        failure = std::move(error);
        const auto completion = completion_;
        // The completion holds the session, which holds this object.
        if (status != AVAssetExportSessionStatus::exporting) completion_ = nullptr;
        if (completion) completion();
    }
    MediaExportRequest request;
    AVAssetExportSessionStatus state = AVAssetExportSessionStatus::unknown;
    float done = 0;
    std::optional<NSError> failure;
    bool isCancelled = false;

private:
    std::function<void()> completion_;
};

/// What a scripted file is to answer.
struct ScriptedClip {
    CMTime length;
    std::vector<AVAssetTrack> trackList;
    std::vector<AVMetadataItem> facts;
    std::vector<std::string> presets;
    bool givesImages = true;
    std::shared_ptr<const CGImage> frame;
};

/// Media files that are what the test says they are, by the path of their address.
class ScriptedMediaBackend final : public MediaBackend {
public:
    std::shared_ptr<MediaFile> open(const NSURL& url, std::optional<NSError>* error) override {
        const auto clip = clips.find(url.path());
        if (clip != clips.end()) return std::make_shared<File>(*this, clip->second);
        if (error) *error = NSError{"There is no such clip."};
        return nullptr;
    }

    std::map<std::string, ScriptedClip> clips;
    /// In the order in which they were asked for.
    std::vector<std::shared_ptr<ScriptedExport>> exports;
    std::vector<CMTime> imageTimes;

private:
    class File final : public MediaFile {
    public:
        File(ScriptedMediaBackend& backend, ScriptedClip clip) : backend_(backend), clip_(std::move(clip)) {}
        CMTime duration() const override { return clip_.length; }
        const std::vector<AVAssetTrack>& tracks() const override { return clip_.trackList; }
        const std::vector<AVMetadataItem>& metadata() const override { return clip_.facts; }
        std::vector<std::string> exportPresets() const override { return clip_.presets; }
        bool canGenerateImages() const override { return clip_.givesImages; }
        std::shared_ptr<const CGImage> copyImage(CMTime time, std::optional<NSError>*) override {
            backend_.imageTimes.push_back(time);
            return clip_.frame;
        }
        std::shared_ptr<MediaExport> makeExport(const MediaExportRequest& request) override {
            auto made = std::make_shared<ScriptedExport>();
            made->request = request;
            backend_.exports.push_back(made);
            return made;
        }

    private:
        ScriptedMediaBackend& backend_;
        ScriptedClip clip_;
    };
};

}  // namespace ostrel
