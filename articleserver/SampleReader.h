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
    std::string password;  ///< empty: nobody can sign in as this person
    std::string portrait;  ///< a file of the folder; empty: the person has none
};

/// A picture or a video; the files are files of the folder.
struct SampleMedium {
    std::string file;
    std::string still;  ///< the still of a video; empty for a picture
    std::string caption;
};

struct SampleArticle {
    ImportedArticle imported;  ///< has no media yet
    std::vector<SampleMedium> images;
    std::vector<SampleMedium> videos;
};

struct SampleContent {
    std::vector<SamplePerson> people;
    std::vector<SampleArticle> articles;            ///< oldest first
    std::vector<StoredNotification> notifications;  ///< oldest first
};

/// Reads the samples.json of a sample folder, which samples/README.md describes. Dates are counted back from
/// `now`. The failure is `badInput`, with one sentence that names the file and the faulty place in it.
ServerResult<SampleContent> readSamples(const std::filesystem::path& folder, ServerTime now);

/// The failure when a file of the samples cannot be read; errno says why.
ServerFailure unreadableSample(const std::filesystem::path& file);

}  // namespace articleserver
