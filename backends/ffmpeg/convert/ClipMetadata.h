#pragma once

#include "backends/ffmpeg/file/FfmpegPointers.h"
#include "platform/media/AVMetadataItem.h"

#include <vector>

namespace ostrel {

/// What a clip says about its capture, whatever its container calls it: date, place (ISO 6709), camera model, software.
std::vector<AVMetadataItem> captureMetadata(const AVFormatContext& format);

/// Writes the same facts into the metadata of an MP4 file: under the keys of QuickTime metadata, as they stood, and where
/// MP4 has a place of its own for them (creation time) there as well.
void copyCaptureMetadata(const AVFormatContext& from, AVFormatContext& to);

}  // namespace ostrel
