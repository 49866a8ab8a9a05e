#include "articleserver/ArticleServer.h"
#include "platform/foundation/runloop/SystemRunLoop.h"
#include "serverframework/HttpServerFramework.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace ostrel {

/// A program may link the server framework and the article server. If both defined a name in one namespace, one of
/// them would run the code of the other.
TEST(BothInOneProcessTest, TheFrameworkTalksToAServerOfItsOwnProcess) {
    const TemporaryFolder folder;
    articleserver::ArticleServerOptions options;
    options.dataFolder = folder.path();
    auto server = articleserver::ArticleServer::start(options);
    ASSERT_TRUE(server) << server.failure().text;

    const auto loop = std::make_shared<SystemRunLoop>();
    RunLoop::installMain(loop);
    auto framework =
        HttpServerFramework::create({.baseAddress = (*server)->url(), .mediaCacheFolder = folder.path("cache")});
    ASSERT_TRUE(framework);
    OstrelServerFramework::install(framework);

    std::optional<std::string> failure;
    bool isDone = false;
    const auto finish = [&](const auto& error) {
        if (error) failure = *error;
        isDone = true;
    };
    const auto wait = [&] {
        EXPECT_TRUE(loop->run([&] { return isDone; }, 20));
        EXPECT_FALSE(failure) << *failure;
        isDone = false;
    };
    framework->signUp("Ada", "long enough", [&](const auto&, const auto& error) { finish(error); });
    wait();
    OstrelServer::shareServer().postURL("/article/update_article_json.html",
                                        {{"title", "Harbour"}, {"text", "At night"}},
                                        [&](const auto&, const auto& error) { finish(error); });
    wait();
    std::vector<Dictionary> articles;
    OstrelServer::shareServer().request("/article/my_articles_json.html", [&](const auto& answer, const auto& error) {
        if (answer) {
            articles = OstrelServerHtmlResultObject::initWithHtml(*answer)->resultsArray();
        }
        finish(error);
    });
    wait();
    ASSERT_EQ(articles.size(), 1U);
    EXPECT_EQ(articles[0]["title"].string(), "Harbour");

    OstrelServerFramework::install(nullptr);
    framework.reset();
    while (loop->runTurn()) {}
    RunLoop::installMain(nullptr);
}

}  // namespace ostrel
