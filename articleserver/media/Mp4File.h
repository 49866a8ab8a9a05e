#pragma once

#include "articleserver/common/ServerResult.h"

namespace articleserver {

/// The facts about the video of an MP4 file that its index states.
struct Mp4Facts {
    /// The size as shown, in pixels: scaled and rotated as the header of the track says.
    int width = 0;
    int height = 0;
    /// In seconds; 0 when the index does not state the duration.
    double duration = 0;
};

/// Reads the boxes of the open file (ISO/IEC 14496-12), not its pictures and sounds. `unsupported` when the
/// file is no MP4 file or holds no video; `badInput` when it is broken or its end is missing.
ServerResult<Mp4Facts> inspectMp4(int descriptor);

}  // namespace articleserver
