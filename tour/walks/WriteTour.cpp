#include "tour/walks/WriteTour.h"

#include "article/detail/UIArticleVideoTableViewCell.h"
#include "article/detail/UIArticleViewController.h"
#include "article/editor/UIArticleEditViewController.h"
#include "platform/media/AVPlayer.h"
#include "platform/uikit/picker/MediaGridCell.h"
#include "reader/screens/ReaderTabs.h"
#include "reader/services/ReaderText.h"
#include "serverframework/HttpServerFramework.h"
#include "tour/guide/TourMedia.h"

#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>

#include <algorithm>
#include <cmath>

namespace ostrel {

namespace {

constexpr char writerName[] = "Tour Writer";
constexpr char writerPassword[] = "three long words";
constexpr char title[] = "Lanterns by the water";
constexpr char text[] = "We carried them down to the quay. 灯笼在水面上亮着。";
constexpr char addition[] = " And home again.";
constexpr char newComment[] = "I can see them from here, <b>you & me</b>.";
constexpr char escapedComment[] = "I can see them from here, &lt;b&gt;you &amp; me&lt;/b&gt;.";
const char* const pictureFiles[] = {"Harbour at dusk.jpg", "Noon 100%.jpg", "Märkte & Straßen.png",
                                    "Holiday 2026/“Quoted”.jpeg"};
const char* const captions[] = {"The quay", "Boats & nets", "港口"};
constexpr char laterCaption[] = "On the way home";

}  // namespace

void WriteTour::run() {
    step("writer-signs-up", [this] { writerSignsUp(); });
    step("editor-opens", [this] { editorOpens(); });
    step("title-and-text", [this] { titleAndTextAreTyped(); });
    step("picker-shows-pictures", [this] { pickerShowsPictures(); });
    step("pictures-are-picked", [this] { picturesArePicked(); });
    step("captions-are-typed", [this] { captionsAreTyped(); });
    step("clip-is-converted", [this] { clipIsConverted(); });
    step("tiles-shake", [this] { tilesShake(); });
    step("drag-swaps-two", [this] { dragSwapsTwo(); });
    step("scrolling-ends-it", [this] { scrollingEndsIt(); });
    step("article-is-posted", [this] { articleIsPosted(); });
    step("article-is-on-top", [this] { articleIsOnTop(); });
    step("article-is-read", [this] { articleIsRead(); });
    step("clip-plays", [this] { clipPlays(); });
    step("editor-opens-again", [this] { editorOpensAgain(); });
    step("pictures-are-changed", [this] { picturesAreChanged(); });
    step("changes-are-posted", [this] { changesArePosted(); });
    step("row-is-updated", [this] { rowIsUpdated(); });
    step("reader-likes", [this] { readerLikes(); });
    step("reader-comments", [this] { readerComments(); });
    step("page-is-public", [this] { pageIsPublic(); });
    step("grid-and-large-tiles", [this] { otherStyles(); });
    step("article-is-deleted", [this] { articleIsDeleted(); });
}

UIArticleViewController* WriteTour::article() {
    const auto navigation = reader_.root().myArticles().navigationController();
    return navigation ? dynamic_cast<UIArticleViewController*>(navigation->topViewController().get()) : nullptr;
}

std::vector<std::string> WriteTour::storedCaptions() {
    return database_.texts("SELECT text FROM images WHERE article_id = ? ORDER BY position, id", {articleId_});
}

std::string WriteTour::storedText(const std::string& column) {
    const auto texts = database_.texts("SELECT " + column + " FROM articles WHERE id = ?", {articleId_});
    return texts.empty() ? std::string() : texts.front();
}

std::int64_t WriteTour::mediaFiles() {
    QDirIterator files(QString::fromStdString(server_.dataFolder() + "/media"), QDir::Files,
                       QDirIterator::Subdirectories);
    std::int64_t count = 0;
    while (files.hasNext()) {
        files.next();
        ++count;
    }
    return count;
}

UIArticleListTableViewCell* WriteTour::rowOf(const std::string& articleId) {
    for (auto* row : window_.all<UIArticleListTableViewCell>()) {
        if (idOf(*row) == articleId) return row;
    }
    return nullptr;
}

void WriteTour::signOut() {
    const auto accounts = server_.accounts();
    for (const std::string& name : {std::string(writerName), accounts.front().name, accounts.back().name}) {
        if (!window_.text(name)) continue;
        openTab(name.c_str());
        break;
    }
    check(window_.waitFor([&] { return window_.text("Sign Out") != nullptr; }), "the account offers to sign out");
    window_.settle();
    press(window_.text("Sign Out"), "Sign Out");
    check(window_.waitFor([&] { return !reader_.framework().shareServer().currentUser(); }), "nobody is signed in");
    window_.settle();
    openTab("Sign In");
    check(window_.waitFor([&] { return window_.first<UITextField>() != nullptr; }), "the login screen opens");
    window_.settle();
}

void WriteTour::writerSignsUp() {
    input_.key(Qt::Key_Escape);
    window_.settle();
    signOut();
    press(window_.text("Create Account"), "Create Account");
    window_.settle();
    signIn(writerName, writerPassword);
    check(window_.waitFor([&] { return reader_.framework().shareServer().currentUser() != nullptr; }),
          "the account is made");
    check(window_.waitFor([&] { return window_.first<UITextField>() == nullptr; }), "the login screen leaves");
    check(database_.number("SELECT count(*) FROM users WHERE name = ?", {writerName}) == 1, "the database has it");
    window_.settle();
    openTab("My Articles");
    filesBefore_ = mediaFiles();
}

void WriteTour::editorOpens() {
    const CGFloat width = reader_.rootView().frame().width();
    press({width - 24, 22});
    check(window_.waitFor([&] { return editor() != nullptr; }), "the add button opens the editor");
    window_.settle();
    if (!editor()) return;
    check(!editor()->navigationItem().rightBarButtonItem()->isEnabled(), "POST is disabled until something changes");
    check(itemCount(Strip::images) == 0 && itemCount(Strip::videos) == 0, "both strips are empty");
}

void WriteTour::titleAndTextAreTyped() {
    if (!check(editor() != nullptr, "the editor is open")) return;
    press(editor()->titleField().get(), "the title");
    window_.settle();
    input_.type(title);
    check(window_.waitFor([&] { return editor()->titleField()->text() == title; }), "the title holds what was typed");
    check(editor()->navigationItem().rightBarButtonItem()->isEnabled(), "POST is enabled");
    input_.key(Qt::Key_Return, "\r");
    check(window_.waitFor([&] { return editor()->textTextField()->isFirstResponder(); }), "Return leads to the text");
    window_.settle();
    input_.type(text);
    check(window_.waitFor([&] { return editor()->textTextField()->text() == text; }), "the text holds both scripts");
}

void WriteTour::pickerShowsPictures() {
    press(tile(Strip::images, 0), "the add tile");
    check(window_.waitFor([&] { return window_.all<MediaGridCell>().size() > std::size(pictureFiles); }),
          "the picker shows the pictures of the user's folder");
    window_.settle();
    TourInput::pass(300);
    savePicture("picker.png");
    input_.key(Qt::Key_Escape);
    check(window_.waitFor([&] { return window_.first<MediaGridCell>() == nullptr; }), "Escape closes it");
    check(itemCount(Strip::images) == 0, "and nothing is added");
}

void WriteTour::picturesArePicked() {
    for (std::size_t i = 0; i < std::size(captions); ++i) pick(Strip::images, pictureFiles[i]);
    check(itemCount(Strip::images) == std::size(captions), "three pictures are in the strip");
}

void WriteTour::captionsAreTyped() {
    for (std::size_t i = 0; i < std::size(captions); ++i) caption(i, captions[i]);
}

void WriteTour::clipIsConverted() {
    pick(Strip::videos, turnedClipName);
    if (itemCount(Strip::videos) != 1) return;
    const auto& item = *(*editor()->videosCell()->videosArray())[0];
    check(item.thumbnail() != nullptr, "the clip has a picture");
    check(item.videoSize().height > item.videoSize().width, "which stands upright");
    check(std::abs(item.duration() - 3) <= 1, "its length is known");
    tile(Strip::videos, 0);
}

void WriteTour::tilesShake() {
    startReordering();
    check(strip(Strip::images) && strip(Strip::images)->collectionView()->numberOfItemsInSection(0) == 3,
          "the add tile has left");
}

void WriteTour::dragSwapsTwo() { swap(0, 2); }

void WriteTour::scrollingEndsIt() {
    endReordering();
    check(strip(Strip::images) && strip(Strip::images)->collectionView()->numberOfItemsInSection(0) == 4,
          "the add tile is back");
}

void WriteTour::articleIsPosted() {
    if (!check(editor() != nullptr, "the editor is open")) return;
    post();
    const auto ids = database_.texts("SELECT a.id FROM articles a JOIN users u ON u.id = a.author_id WHERE u.name = ?",
                                     {writerName});
    if (!check(ids.size() == 1, "the database has the article")) return;
    articleId_ = ids.front();
    check(storedText("title") == title, "with its title");
    check(storedText("text") == text, "and its text");
    check(storedCaptions() == std::vector<std::string>{captions[2], captions[1], captions[0]},
          "its pictures are in the order shown");
    check(database_.number("SELECT count(*) FROM videos WHERE article_id = ? AND height > width", {articleId_}) == 1,
          "its clip is upright");
    check(mediaFiles() > filesBefore_, "their files are there");
}

void WriteTour::articleIsOnTop() {
    check(window_.waitFor([&] { return rowOf(articleId_) != nullptr; }), "the list shows the new article");
    const auto& articles = reader_.root().myArticles().articlesArray();
    check(!articles.empty() && articles.front()["id"].text() == articleId_, "as the first");
    check(window_.text(title) != nullptr || window_.textContaining(title) != nullptr, "with its title");
}

void WriteTour::articleIsRead() {
    auto* const row = rowOf(articleId_);
    if (!check(row != nullptr, "its row is on screen")) return;
    const CGRect rect = window_.rectOf(*row);
    press({rect.minX() + 140, rect.minY() + 30});
    check(window_.waitFor([&] { return article() && !article()->resultDict()["id"].isNull(); }), "it opens");
    window_.settle();
    check(article() && article()->imagesArray().size() == 3 && article()->videosArray().size() == 1,
          "with all its media");
    check(window_.text(title) != nullptr, "its title is on screen");
}

void WriteTour::clipPlays() {
    UIArticleVideoTableViewCell* row = nullptr;
    const CGFloat bottom = reader_.rootView().frame().height() - ReaderTabs::barHeight;
    for (int i = 0; i < 40; ++i) {
        row = window_.first<UIArticleVideoTableViewCell>();
        if (row && window_.rectOf(*row->thumbnailImageView()).midY() < bottom - 40) break;
        scrollDown();
    }
    if (!check(row != nullptr, "the clip is on screen")) return;
    const CGRect rect = window_.rectOf(*row->thumbnailImageView());
    press({rect.midX(), std::min(rect.midY(), bottom - 30)});
    check(window_.waitFor(
              [&] {
                  return row->player() && row->player()->currentItem() && row->player()->currentTime().seconds() > 0.3;
              },
              15000),
          "it plays");
    savePicture("clip.png");
    input_.key(Qt::Key_Escape);
    check(window_.waitFor([&] { return article() == nullptr; }), "Escape goes back");
    window_.settle();
}

void WriteTour::editorOpensAgain() {
    auto* const row = rowOf(articleId_);
    if (!check(row != nullptr, "the article's row is on screen")) return;
    const CGRect rect = window_.rectOf(*row);
    if (options_.reader.idiom == UIUserInterfaceIdiom::mac) {
        input_.click({rect.midX(), rect.midY()}, Qt::RightButton);
    } else {
        input_.swipe({rect.maxX() - 60, rect.midY()}, {rect.minX() + 60, rect.midY()}, 160, 60);
    }
    check(window_.waitFor([&] { return window_.text("Edit") != nullptr; }), "Edit is offered");
    window_.settle();
    press(window_.text("Edit"), "Edit");
    check(window_.waitFor([&] { return editor() != nullptr; }), "it opens the editor");
    window_.settle();
    if (!editor()) return;
    check(editor()->titleField()->text() == title && editor()->textTextField()->text() == text,
          "with the article's texts");
    check(itemCount(Strip::images) == 3 && itemCount(Strip::videos) == 1, "and media");
}

void WriteTour::picturesAreChanged() {
    if (!check(editor() != nullptr, "the editor is open")) return;
    remove(1);
    pick(Strip::images, pictureFiles[3]);
    startReordering();
    swap(1, 2);
    endReordering();
    caption(1, laterCaption);
    tile(Strip::images, 0);
    auto* const box = editor()->textTextField().get();
    for (int i = 0; i < 10 && window_.rectOf(*box).minY() < 44; ++i) {
        if (options_.reader.idiom == UIUserInterfaceIdiom::mac) {
            input_.wheel({reader_.rootView().frame().width() / 2, 200}, 3);
        } else {
            input_.swipe({reader_.rootView().frame().width() / 2, 200}, {reader_.rootView().frame().width() / 2, 320},
                         120, 120);
        }
        window_.settle();
    }
    press(box, "the text");
    window_.settle();
    input_.key(Qt::Key_End, {}, Qt::ControlModifier);
    input_.type(addition);
    check(window_.waitFor([&] { return box->text() == std::string(text) + addition; }), "the text has grown");
}

void WriteTour::changesArePosted() {
    if (!check(editor() != nullptr, "the editor is open")) return;
    const auto loaded = reader_.root().myArticles().lastLoadDate();
    const std::int64_t files = mediaFiles();
    post();
    check(reader_.root().myArticles().lastLoadDate() == loaded, "the list was not loaded again");
    check(storedText("text") == std::string(text) + addition, "the database has the new text");
    check(storedCaptions() == std::vector<std::string>{captions[2], laterCaption, captions[0]},
          "one picture has gone, another is between");
    check(mediaFiles() == files, "the files of the removed picture have left, those of the new one are there");
}

void WriteTour::rowIsUpdated() {
    auto* const row = rowOf(articleId_);
    if (!check(row != nullptr, "the row is there")) return;
    check(row->articleDictionary()["text"].string() == std::string(text) + addition, "and shows the new text");
}

void WriteTour::readerLikes() {
    signOut();
    const auto& account = server_.accounts().back();
    signIn(account.name, account.password);
    check(window_.waitFor([&] { return reader_.framework().shareServer().currentUser() != nullptr; }),
          "a reader is signed in");
    check(window_.waitFor([&] { return window_.first<UITextField>() == nullptr; }), "the login screen has left");
    window_.settle();
    openTab("Articles");
    // An earlier part of the tour left an article open in this tab.
    input_.key(Qt::Key_Escape);
    window_.settle();
    input_.key(Qt::Key_Home);
    window_.settle();
    input_.key(Qt::Key_F, "f");
    check(window_.waitFor([&] { return rowOf(articleId_) != nullptr; }), "everybody sees the article");
    window_.settle();
    auto* const row = rowOf(articleId_);
    if (!row) return;
    press(row->likeButton().get(), "the like button");
    check(window_.waitFor(
              [&] { return database_.number("SELECT count(*) FROM likes WHERE article_id = ?", {articleId_}) == 1; }),
          "the like is in the database");
}

void WriteTour::readerComments() {
    auto* const row = rowOf(articleId_);
    if (!check(row != nullptr, "the row is there")) return;
    press(row->commentButton().get(), "its comment button");
    check(window_.waitFor([&] { return window_.text("Reply") != nullptr; }), "the composer opens");
    window_.settle();
    input_.type(newComment);
    check(window_.waitFor([&] { return window_.textContaining(newComment) != nullptr; }), "it holds what was typed");
    press(window_.text("Reply"), "Reply");
    check(window_.waitFor([&] {
        return database_.number("SELECT count(*) FROM comments WHERE article_id = ? AND text = ?",
                                {articleId_, newComment}) == 1;
    }),
          "the comment is in the database");
    check(window_.waitFor([&] { return window_.text("Reply") == nullptr; }), "the composer leaves");
}

void WriteTour::pageIsPublic() {
    auto* const row = rowOf(articleId_);
    if (!check(row != nullptr, "the row is there")) return;
    const std::string url(row->articleDictionary()["url"].string());
    check(url.starts_with(server_.address()), "the article has an address on the server");
    std::optional<std::string> page;
    reader_.framework().shareServer().request(
        url.substr(std::min(url.size(), server_.address().size())),
        [&](const auto& answer, const auto&) { page = answer.value_or("").string(); });
    check(window_.waitFor([&] { return page.has_value(); }), "it answers");
    if (!page) return;
    check(page->find(title) != std::string::npos && page->find(escapedComment) != std::string::npos,
          "with the title and the comment");
    check(page->find("<b>you") == std::string::npos, "what a user wrote is escaped");
    const QString browser = QStandardPaths::findExecutable("chromium");
    if (browser.isEmpty()) return;
    const QString picture = QString::fromStdString(options_.folder) + "/page.png";
    QFile::remove(picture);
    QProcess process;
    process.start(browser, {"--headless", "--no-sandbox", "--disable-gpu", "--hide-scrollbars",
                            "--window-size=420,1400", "--screenshot=" + picture, QString::fromStdString(url)});
    check(window_.waitFor([&] { return process.state() == QProcess::NotRunning; }, 40000), "a browser opens it");
    if (process.state() != QProcess::NotRunning) process.kill();
    process.waitForFinished(2000);
    check(QFileInfo(picture).size() > 0, "and draws it");
}

// The reader offers one style of the editor only; this step opens the other styles as a host would.
void WriteTour::otherStyles() {
    openTab("My Articles");
    window_.settle();
    auto* const navigation = reader_.root().myArticles().navigationController();
    for (const auto& [style, file] : {std::pair{1, "/grid.png"}, std::pair{2, "/large.png"}}) {
        std::vector<std::shared_ptr<const UIImage>> pictures;
        for (int i = 0; i < 4; ++i) {
            const QString path =
                QString::fromStdString(options_.reader.picturesFolder) + "/" + QString::fromUtf8(pictureFiles[i]);
            pictures.push_back(UIImage::imageWithData(Data::mapFile(path.toStdString())));
        }
        auto screen = make<UIArticleEditViewController>(std::move(pictures), title, text, false);
        screen->setArticleEditStyle(style);
        navigation->pushViewController(screen, true);
        check(window_.waitFor([&] { return editor() == screen.get(); }), "a host opens the editor");
        window_.settle();
        check(itemCount(Strip::images) == 4, "pre-filled");
        window_.savePicture(options_.folder + file);
        press({36, 22});
        check(window_.waitFor([&] { return editor() == nullptr; }), "Cancel closes it");
        window_.settle();
    }
}

void WriteTour::articleIsDeleted() {
    signOut();
    signIn(writerName, writerPassword);
    check(window_.waitFor([&] { return window_.first<UITextField>() == nullptr; }), "the login screen has left");
    window_.settle();
    openTab("My Articles");
    check(window_.waitFor([&] { return rowOf(articleId_) != nullptr; }), "the writer sees the article");
    TourInput::pass(500);
    window_.settle();
    auto* const row = rowOf(articleId_);
    if (!row) return;
    const CGRect rect = window_.rectOf(*row);
    if (options_.reader.idiom == UIUserInterfaceIdiom::mac) {
        input_.click({rect.midX(), rect.midY()}, Qt::RightButton);
    } else {
        input_.swipe({rect.maxX() - 60, rect.midY()}, {rect.minX() + 60, rect.midY()}, 160, 60);
    }
    check(window_.waitFor([&] { return window_.text("Delete") != nullptr; }), "Delete is offered");
    window_.settle();
    press(window_.text("Delete"), "Delete");
    check(window_.waitFor(
              [&] { return database_.number("SELECT count(*) FROM articles WHERE id = ?", {articleId_}) == 0; }),
          "the article has left the database");
    check(window_.waitFor([&] { return mediaFiles() == filesBefore_; }), "and its files the disk");
}

}  // namespace ostrel
