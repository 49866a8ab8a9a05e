#pragma once

#include "tour/guide/EditorGuide.h"

#include <cstdint>
#include <string>
#include <vector>

namespace ostrel {

class UIArticleViewController;

/// The whole life of an article: a new user writes it with pictures and a clip, posts, reads and changes it; another
/// user likes it and comments on it; a browser shows its page; its author removes it. Last part of the tour.
class WriteTour final : public EditorGuide {
public:
    using EditorGuide::EditorGuide;
    void run();

private:
    void writerSignsUp();
    void editorOpens();
    void titleAndTextAreTyped();
    void pickerShowsPictures();
    void picturesArePicked();
    void captionsAreTyped();
    void clipIsConverted();
    void tilesShake();
    void dragSwapsTwo();
    void scrollingEndsIt();
    void articleIsPosted();
    void articleIsOnTop();
    void articleIsRead();
    void clipPlays();
    void editorOpensAgain();
    void picturesAreChanged();
    void changesArePosted();
    void rowIsUpdated();
    void readerLikes();
    void readerComments();
    void pageIsPublic();
    void otherStyles();
    void articleIsDeleted();

    /// The article screen on top; null when another screen is.
    UIArticleViewController* article();
    /// The captions of the article's pictures in the database, ordered by position.
    std::vector<std::string> storedCaptions();
    /// A column of the article's row in the database.
    std::string storedText(const std::string& column);
    /// The number of media files that the server has.
    std::int64_t mediaFiles();
    /// Signs the user out and opens the login screen.
    void signOut();
    /// The row of the article in the list on screen; null when there is none.
    UIArticleListTableViewCell* rowOf(const std::string& articleId);

    std::string articleId_;
    /// The media files before the article was written.
    std::int64_t filesBefore_ = 0;
};

}  // namespace ostrel
