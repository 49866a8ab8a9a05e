#pragma once

#include "article/resources/ArticleBundles.h"
#include "backends/headless/HeadlessPlatform.h"
#include "platform/foundation/runloop/NSThread.h"
#include "platform/uikit/screens/UINavigationController.h"
#include "tests/support/HostileRecords.h"
#include "tests/support/LogCapture.h"
#include "tests/support/ScriptedServer.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace ostrel {

using Lines = std::vector<std::string>;

/// A window of the headless backend, the scripted server, the module's own bundles and a captured log.
class ArticleTest : public testing::Test {
protected:
    ArticleTest() {
        useBundles(OSTREL_RESOURCE_DIR);
        OstrelServerFramework::install(server);
    }
    ~ArticleTest() override {
        platform.window().setRootViewController(nullptr);
        platform.advance(1);
        EXPECT_TRUE(NSThread::waitForAll(10)) << "threads that still use the server";
        OstrelServerFramework::install(nullptr);
        OstrelArticleBundle = nullptr;
    }

    /// All bundles are looked for in `folder` from now on; those that were loaded are forgotten.
    static void useBundles(const std::string& folder) {
        NSBundle::setMainBundlePath(folder);
        NSBundle::registerBundle(OstrelArticleBundleIdentifier, folder);
        OstrelArticleBundle = nullptr;
    }
    static void useIdiom(UIUserInterfaceIdiom idiom) { UIDevice::currentDevice().setUserInterfaceIdiom(idiom); }
    void show(std::shared_ptr<UIViewController> root) {
        platform.window().setRootViewController(std::move(root));
        platform.settle();
    }
    void tap(const std::shared_ptr<UIView>& view) {
        ASSERT_NE(view, nullptr);
        platform.tap(*view);
    }
    /// What the window's outermost screen presents, when it is a `Screen`.
    template <class Screen>
    std::shared_ptr<Screen> presented() {
        return std::dynamic_pointer_cast<Screen>(platform.window().rootViewController()->presentedViewController());
    }
    /// The log since the last call.
    Lines logged() {
        const Lines all = log.lines();
        const auto from = static_cast<std::ptrdiff_t>(linesSeen_);
        linesSeen_ = all.size();
        return {all.begin() + from, all.end()};
    }

    HeadlessPlatform platform;
    LogCapture log;
    std::shared_ptr<ScriptedServer> server = std::make_shared<ScriptedServer>();

private:
    std::size_t linesSeen_ = 0;
};

inline Value json(std::string_view text) { return Value::parse(text); }
inline Dictionary record(std::string_view text) { return Dictionary::parse(text); }

}  // namespace ostrel
