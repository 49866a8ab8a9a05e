#pragma once

#include "backends/ffmpeg/convert/PictureGeometry.h"

#include <cstdint>
#include <span>
#include <string_view>

namespace ostrel {

/// What an export writes: H.264 (ITU-T H.264, High profile) and AAC-LC (ISO/IEC 14496-3) in MP4.
struct ExportPreset {
    std::string_view name;
    /// In landscape; pictures in portrait are fitted into the same box in portrait.
    PixelSize box;
    int largestFrameRate = 0;
    /// x264's constant rate factor: the quality that x264 aims at below the largest rate.
    double rateFactor = 0;
    /// The largest rate (bits per second), kept over the time that the buffer (bits) lasts.
    std::int64_t largestVideoRate = 0;
    std::int64_t videoBuffer = 0;
    /// Bits per second.
    std::int64_t audioRate = 0;
    int audioChannels = 0;

    /// True when the installed libraries have the encoders.
    bool isSupportedByBuild() const;
};

/// x264's preset of speed. Slower ones gain little quality for much time.
inline constexpr const char* videoEncoderSpeed = "veryfast";
/// The most seconds between keyframes: a player that seeks has to decode from the keyframe before.
inline constexpr int secondsBetweenKeyframes = 5;
/// The clock of the written tracks, in ticks per second. Frames at 24, 25, 29.97, 30 and 60 per second last whole
/// ticks.
inline constexpr int outputTicks = 90000;
/// The highest sampling rate that is written, in samples per second.
inline constexpr int largestSampleRate = 48000;

std::span<const ExportPreset> exportPresetTable();

}  // namespace ostrel
