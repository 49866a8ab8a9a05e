#pragma once

#include "tour/TourGuide.h"

#include <cstdint>
#include <string>
#include <vector>

namespace ostrel {

class UIArticleEditViewController;
class UIArticleEditMediaTableViewCell;
class UIArticleViewController;
class UICollectionViewCell;

/// The whole life of an article: written by a new account with pictures and a clip, posted, read, changed, liked and
/// commented on by somebody else, looked at in a browser, removed. Last of the tours.
class WriteTour final : public TourGuide {
public:
    using TourGuide::TourGuide;
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

    UIArticleEditViewController* editor();
    UIArticleViewController* article();
    /// The strip of images (0) or of videos (1); null unless an editor is on top.
    UIArticleEditMediaTableViewCell* strip(int kind);
    /// Scrolls the editor until the strip's item is wholly on screen; null when it never is.
    UICollectionViewCell* tile(int kind, std::size_t index);
    std::size_t itemCount(int kind);
    void pick(int kind, const std::string& file);
    void caption(std::size_t index, const std::string& text);
    void remove(std::size_t index);
    void swap(std::size_t from, std::size_t to);
    void startReordering();
    void endReordering();
    void post();
    /// The captions of the article's pictures by their positions, as the database has them.
    std::vector<std::string> storedCaptions();
    std::string storedText(const std::string& column);
    std::int64_t mediaFiles();
    void signOut();
    void signUp(const std::string& name);
    UIArticleListTableViewCell* rowOf(const std::string& articleId);

    std::string articleId_;
    std::int64_t filesBefore_ = 0;
};

}  // namespace ostrel
