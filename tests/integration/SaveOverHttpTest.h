#pragma once

#include "serverframework/HttpServerFramework.h"
#include "tests/article/editor/ArticleEditTest.h"

namespace ostrel {

/// The editor over the real server framework: HTTP runs on real threads and real time, the rest on virtual time.
class SaveOverHttpTest : public ArticleEditTest {
protected:
    ~SaveOverHttpTest() override { endFramework(); }

    void startFramework(const std::string& address) {
        HttpServerFramework::Options options;
        options.baseAddress = address;
        options.mediaCacheFolder = "";
        std::string error;
        framework = HttpServerFramework::create(options, &error);
        ASSERT_TRUE(framework) << error;
        OstrelServerFramework::install(framework);
    }
    /// As a host does at its end; what is under way is cancelled.
    void endFramework() {
        OstrelServerFramework::install(nullptr);
        framework.reset();
        platform.settle();
    }
    bool waitFor(const std::function<bool()>& isDone) { return platform.loop().waitFor(isDone, 30); }
    /// Lets time pass while real answers arrive, until there were `count` notifications in all.
    void waitForSaves(std::size_t count) {
        for (int i = 0; i < 600 && posted.size() < count; ++i) {
            platform.loop().waitFor([&] { return posted.size() == count; }, 0.05);
            elapse(0.5);
        }
        ASSERT_EQ(posted.size(), count);
        platform.advance(1);
    }

    std::shared_ptr<HttpServerFramework> framework;
};

}  // namespace ostrel
