#pragma once

#include "articleserver/ArticleServer.h"
#include "articleserver/media/MediaFolder.h"
#include "articleserver/sample/SampleClips.h"
#include "articleserver/sample/SampleGallery.h"
#include "articleserver/sample/SamplePainter.h"
#include "articleserver/store/ArticleStore.h"

#include <initializer_list>
#include <span>
#include <string_view>
#include <vector>

namespace ostrel {

/// The people of the sample content.
enum class SampleAuthor { Ada, Lin, Marek, Wen, Imani, Oskar, Yara, Tove };

struct SampleComment {
    SampleAuthor author;
    std::string_view text;
};

struct SampleImage {
    SampleScene scene;
    int width;  ///< pixels, as shown
    int height;
    std::string_view caption = "";
    int orientation = 1;  ///< Exif; how the file stores it
};

struct SampleVideo {
    SampleClip clip;
    std::string_view caption = "";
};

struct SampleArticle {
    SampleAuthor author;
    std::string_view title;
    std::string_view text;
    /// Minutes between the last change and the filling of the database.
    int age;
    int likes = 0;
    bool openComment = true;
    std::vector<SampleImage> images = {};
    std::vector<SampleVideo> videos = {};
    std::vector<SampleComment> comments = {};
};

std::vector<SampleArticle> sampleArticlesOfStreets();
std::vector<SampleArticle> sampleArticlesOfTable();
std::vector<SampleArticle> sampleArticlesOfGarden();
std::vector<SampleArticle> sampleArticlesOfFarAway();
std::vector<SampleArticle> sampleArticlesOfWorkshop();
std::vector<SampleArticle> shortSampleArticles();
std::vector<SampleArticle> chineseSampleArticles();
std::vector<SampleArticle> longerChineseSampleArticles();

/// Fills an empty store with sample authors, articles, comments, likes, messages and clips, all or nothing, and orders
/// the pictures from the gallery; leaves any other store as it is. Answers the accounts that can be signed in with. `now`
/// is the moment that dates are counted back from.
ServerResult<std::vector<SampleAccount>> fillWithSamples(ArticleStore& store, MediaFolder& media,
                                                         SampleGallery& gallery, ServerTime now);

}  // namespace ostrel
