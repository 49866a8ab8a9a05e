#pragma once

#include "backends/ffmpeg/convert/PictureGeometry.h"

#include <cstdint>
#include <span>
#include <string_view>

namespace ostrel {

/// What an export writes: H.264 (ITU-T H.264, High profile) and AAC-LC (ISO/IEC 14496-3) in MP4.
struct ExportPreset {
    std::string_view name;
    /// Lying; standing pictures fit the same box standing.
    PixelSize box;
    int largestFrameRate = 0;
    /// x264's constant rate factor: what quality is aimed at while the ceiling allows.
    double rateFactor = 0;
    /// The ceiling, kept over the time that the buffer lasts; bits a second, and bits.
    std::int64_t largestVideoRate = 0;
    std::int64_t videoBuffer = 0;
    std::int64_t audioRate = 0;  ///< bits a second
    int audioChannels = 0;

    /// True when the libraries of this build have the encoders.
    bool isSupportedByBuild() const;
};

/// x264's speed: of its presets, the knee of quality against time.
inline constexpr const char* videoEncoderSpeed = "veryfast";
/// Seconds between keyframes at most: how far a player must decode when it is sent to a moment.
inline constexpr int secondsBetweenKeyframes = 5;
/// The clock of the written tracks, ticks a second: divides by 24, 25, 30 and 60, and holds 29.97 exactly.
inline constexpr int outputTicks = 90000;
/// The highest rate of samples that is written.
inline constexpr int largestSampleRate = 48000;

std::span<const ExportPreset> exportPresetTable();

}  // namespace ostrel
