#pragma once

#include "article/detail/UIArticleCommentViewTableViewCell.h"
#include "article/detail/UIArticleVideoTableViewCell.h"
#include "article/detail/UIArticleViewController.h"
#include "article/detail/UIArticleViewImageTableViewCell.h"
#include "article/detail/UIArticleViewTextTableViewCell.h"
#include "article/detail/UIArticleViewTitleTableViewCell.h"
#include "platform/foundation/resources/Files.h"
#include "tests/article/ArticleTest.h"
#include "tests/support/ScriptedPlayer.h"
#include "tests/support/TemporaryFolder.h"

namespace ostrel {

/// A detail screen of article 42, pushed onto an empty screen in the window, with a home directory of its own.
class ArticleDetailTest : public ArticleTest {
protected:
    ArticleDetailTest() : formerHome_(NSHomeDirectory()) {
        setHomeDirectory(home.path());
        loadOstrelArticleBundle();
    }
    ~ArticleDetailTest() override {
        platform.window().setRootViewController(nullptr);
        setHomeDirectory(formerHome_);
    }

    void showDetail(const char* listRecord = R"({"id":42,"title":"from the list"})") {
        navigation = make<UINavigationController>(make<UIViewController>());
        show(navigation);
        detail = make<UIArticleViewController>();
        detail->setArticleDictionary(record(listRecord));
        navigation->pushViewController(detail, false);
        platform.advance(1);
    }
    void showArticle(const std::string& article) {
        showDetail();
        answerArticle(article);
    }
    void answerArticle(const std::string& article) {
        server->answer(article);
        platform.advance(1);
        EXPECT_TRUE(NSThread::waitForAll(10));
        platform.advance(1);
    }
    UITableView& table() { return *detail->myTableView(); }
    template <class Row>
    std::shared_ptr<Row> row(std::int64_t section, std::int64_t index = 0) {
        return std::dynamic_pointer_cast<Row>(table().cellForRowAtIndexPath({section, index}));
    }
    std::shared_ptr<UIArticleVideoTableViewCell> video(std::int64_t index) {
        return row<UIArticleVideoTableViewCell>(3, index);
    }
    std::vector<std::int64_t> rowCounts() {
        std::vector<std::int64_t> counts;
        for (std::int64_t section = 0; section < table().numberOfSections(); ++section)
            counts.push_back(table().numberOfRowsInSection(section));
        return counts;
    }
    /// An article with `videos` videos, four times as wide as high and 65 seconds long.
    static std::string articleWithVideos(int videos) {
        std::string list;
        for (int i = 0; i < videos; ++i) {
            const std::string number = std::to_string(i), address = "https://example.org/" + number;
            list += (i ? R"(,{"video":")" : R"({"video":")") + address + R"(.mp4","thumbnail":")" + address +
                    R"(.jpg","video_width":1600,"video_height":400,"duration":65,"text":"video )" + number + "\"}";
        }
        return R"({"id":42,"title":"Videos","text":"","videos":[)" + list + "]}";
    }
    /// The bytes of a picture of the module's bundle.
    static Data picture(const char* name = "loading") {
        return Data::mapFile(*OstrelArticleBundle->pathForResource(name, "png"));
    }
    static std::string_view shownBytes(const UIImageView& view) {
        return view.image() ? view.image()->representation(1).data.view() : std::string_view();
    }

    TemporaryFolder home;
    ScriptedPlayers players;
    std::shared_ptr<UINavigationController> navigation;
    std::shared_ptr<UIArticleViewController> detail;

private:
    const std::string formerHome_;
};

}  // namespace ostrel
