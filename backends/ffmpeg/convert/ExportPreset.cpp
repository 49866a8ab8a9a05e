#include "backends/ffmpeg/convert/ExportPreset.h"

#include "backends/ffmpeg/file/FfmpegPointers.h"
#include "platform/media/AVAssetExportSession.h"

#include <array>

namespace ostrel {

namespace {
constexpr std::array presets{
    ExportPreset{.name = AVAssetExportPresetMediumQuality,
                 .box = {640, 360},
                 .largestFrameRate = 30,
                 .rateFactor = 23,
                 .largestVideoRate = 1'000'000,
                 .videoBuffer = 2'000'000,
                 .audioRate = 128'000,
                 .audioChannels = 2},
    ExportPreset{.name = AVAssetExportPresetLowQuality,
                 .box = {320, 180},
                 .largestFrameRate = 15,
                 .rateFactor = 26,
                 .largestVideoRate = 200'000,
                 .videoBuffer = 400'000,
                 .audioRate = 48'000,
                 .audioChannels = 1},
};
}  // namespace

std::span<const ExportPreset> exportPresetTable() { return presets; }

bool ExportPreset::isSupportedByBuild() const {
    return avcodec_find_encoder_by_name("libx264") && avcodec_find_encoder_by_name("aac") &&
           av_guess_format("mp4", nullptr, nullptr);
}

}  // namespace ostrel
