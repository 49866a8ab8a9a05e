#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace ostrel {

/// The facts of a written clip, read with the libraries only.
struct ProbedClip {
    std::string videoCodec, audioCodec, pixelFormat, matrix, range, transfer;
    int width = 0, height = 0, channels = 0, frames = 0;
    int profile = 0;
    double duration = 0, largestFrameRate = 0, audioSeconds = 0, firstFrame = -1;
    std::int64_t videoBytes = 0;
    bool isIndexInFront = false;
    bool isTurned = false;
    std::map<std::string, std::string> metadata;
    /// Mean of the luma of every decoded picture.
    std::vector<double> brightness;
};

/// None when the file is no clip, or when a part of it cannot be decoded.
std::optional<ProbedClip> probeClip(const std::string& path);

}  // namespace ostrel
