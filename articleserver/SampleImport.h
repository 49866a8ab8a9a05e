#pragma once

#include "articleserver/ArticleServer.h"
#include "articleserver/common/ServerResult.h"
#include "articleserver/common/ServerText.h"
#include "articleserver/media/MediaFolder.h"
#include "articleserver/store/ArticleStore.h"

#include <filesystem>
#include <vector>

namespace articleserver {

/// Fills an empty store with the people, articles and messages of a sample folder (samples/README.md describes one), all or
/// nothing; leaves any other store as it is. Media pass the door that uploads pass. Answers the accounts of the folder that
/// the store has and that their passwords open. Dates are counted back from `now`. A failure's text is one sentence for the
/// person who starts the server. Before the server serves.
ServerResult<std::vector<SampleAccount>> bringInSamples(const std::filesystem::path& folder,
                                                        ArticleStore& store, MediaFolder& media,
                                                        ServerTime now);

}  // namespace articleserver
