#pragma once

#include "articleserver/common/ServerResult.h"
#include "articleserver/common/ServerText.h"
#include "articleserver/store/ArticleStore.h"

#include <filesystem>
#include <string>
#include <vector>

namespace articleserver {

struct SamplePerson {
    std::string name;
    std::string password;  ///< empty: nobody signs in as this person
    std::string portrait;  ///< a file of the folder; empty: none
};

/// A medium to be brought in: files of the folder.
struct SampleMedium {
    std::string file;
    std::string still;  ///< of a video
    std::string caption;
};

struct SampleArticle {
    ImportedArticle imported;  ///< without its media
    std::vector<SampleMedium> images;
    std::vector<SampleMedium> videos;
};

struct SampleContent {
    std::vector<SamplePerson> people;
    std::vector<SampleArticle> articles;            ///< oldest first
    std::vector<StoredNotification> notifications;  ///< oldest first
};

/// Reads the samples.json of a sample folder, which samples/README.md describes; dates are counted back from `now`. BadInput
/// with one sentence that names the file and the place in it that is wrong.
ServerResult<SampleContent> readSamples(const std::filesystem::path& folder, ServerTime now);

/// The failure of reading a file of the samples, from errno.
ServerFailure unreadableSample(const std::filesystem::path& file);

}  // namespace articleserver
