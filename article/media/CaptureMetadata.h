#pragma once

#include "article/media/NSArticleVideoObject.h"
#include "platform/media/AVAsset.h"

namespace ostrel {

/// Copies what a picked clip says about its capture (date, place, camera model, software) into its item. The last of
/// several facts with the same key counts; a property without a fact keeps its value.
///
/// Kept on purpose: the place is cut out of its ISO 6709 text at the fixed positions 0, 8 and 17 whatever its layout,
/// into 8, 9 and 9 characters, and every "/" is removed from the last part. A text of fewer than 26 characters is
/// ignored.
void copyCaptureMetadata(const AVAsset& clip, NSArticleVideoObject& item);

}  // namespace ostrel
