#pragma once

#include "article/media/NSArticleVideoObject.h"
#include "platform/media/AVAsset.h"

namespace ostrel {

/// Copies what a picked clip says about its capture (date, place, camera model, software) into its item; a later fact
/// overrides an earlier one with the same key, and what the clip does not say stays as it was.
///
/// The place is cut from its ISO 6709 text at the fixed positions 0, 8 and 17, whatever its layout: 8, 9 and 9 characters,
/// every "/" taken out of the last. A text of fewer than 26 characters cannot be cut and is left out.
void copyCaptureMetadata(const AVAsset& clip, NSArticleVideoObject& item);

}  // namespace ostrel
