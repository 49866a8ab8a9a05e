#pragma once

#include "backends/ffmpeg/file/FfmpegPointers.h"
#include "platform/media/AVMetadataItem.h"

#include <vector>

namespace ostrel {

/// The facts of a clip's capture: date, place (ISO 6709), camera model, software. Each container names them
/// differently.
std::vector<AVMetadataItem> captureMetadata(const AVFormatContext& format);

/// Copies the same facts, unchanged, into the metadata of an MP4 file, under the keys of QuickTime metadata. The
/// creation time is also written to MP4's own field.
void copyCaptureMetadata(const AVFormatContext& from, AVFormatContext& to);

}  // namespace ostrel
