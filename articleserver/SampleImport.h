#pragma once

#include "articleserver/ArticleServer.h"
#include "articleserver/common/ServerResult.h"
#include "articleserver/common/ServerText.h"
#include "articleserver/media/MediaFolder.h"
#include "articleserver/store/ArticleStore.h"

#include <filesystem>
#include <vector>

namespace articleserver {

/// Fills an empty store with the people, articles and messages of a sample folder, which samples/README.md
/// describes: with all of them or, after a failure, with none. Leaves any other store as it is; a folder that
/// cannot be read is then no failure, but a line in the log. Media pass the same checks as uploads. Dates are
/// counted back from `now`.
///
/// Returns the accounts of the folder that the store has and that have the password of the folder. The text
/// of a failure is one sentence for the person who starts the server. Called before the server serves.
ServerResult<std::vector<SampleAccount>> importSamples(const std::filesystem::path& folder, ArticleStore& store,
                                                       MediaFolder& media, ServerTime now);

}  // namespace articleserver
