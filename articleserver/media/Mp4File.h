#pragma once

#include "articleserver/common/ServerResult.h"

namespace articleserver {

/// What the index of an MP4 file says of its film.
struct Mp4Facts {
    int width = 0;  ///< as shown: scaled and turned as its track says, pixels
    int height = 0;
    double duration = 0;  ///< seconds; 0 when the index does not say
};

/// Reads the boxes of the open file (ISO/IEC 14496-12), not what is in them: Unsupported when it is no MP4 file or holds
/// no film, BadInput when it is broken or was cut short.
ServerResult<Mp4Facts> inspectMp4(int descriptor);

}  // namespace articleserver
