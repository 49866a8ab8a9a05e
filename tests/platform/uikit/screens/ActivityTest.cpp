#include "tests/platform/uikit/screens/ControllerTestSupport.h"

#include "platform/graphics/TextMeasurer.h"
#include "platform/uikit/screens/UIActivityViewController.h"
#include "platform/uikit/text/LinkText.h"

namespace ostrel {
namespace {

class ActivityTest : public ControllerTest {
protected:
    void SetUp() override {
        ControllerTest::SetUp();
        auto& application = UIApplication::sharedApplication();
        application.setPasteboardText = [this](const std::string& text) { copied.push_back(text); };
        application.openURL = [this](const std::string& url) {
            opened.push_back(url);
            return true;
        };
    }
    void TearDown() override {
        UIApplication::sharedApplication().setPasteboardText = nullptr;
        UIApplication::sharedApplication().openURL = nullptr;
        ControllerTest::TearDown();
    }
    std::shared_ptr<UIActivityViewController> share(const std::string& url) {
        auto sheet = make<UIActivityViewController>(url);
        window().rootViewController()->presentViewController(sheet, true);
        settle();
        return sheet;
    }
    UIView* row(UIViewController& sheet, const std::string& title) {
        return labelled(*sheet.view(), AccessibilityRole::button, title);
    }
    std::vector<std::string> copied, opened;
};

const std::string article = "http://127.0.0.1:8080/article/12?a=b&c=é";

TEST_F(ActivityTest, EachRowDoesItsWorkAndCloses) {
    struct Case {
        const char* title;
        std::vector<std::string> copied, opened;
    };
    const Case cases[] = {
        {"Copy Link", {article}, {}},
        {"Open in Browser", {}, {article}},
        {"Send by Mail", {}, {"mailto:?body=http%3A%2F%2F127.0.0.1%3A8080%2Farticle%2F12%3Fa%3Db%26c%3D%C3%A9"}},
        {"Cancel", {}, {}},
    };
    show(screen("A"));
    for (const Case& each : cases) {
        copied.clear();
        opened.clear();
        std::weak_ptr<UIViewController> gone;
        {
            const auto sheet = share(article);
            gone = sheet;
            UIView* const button = row(*sheet, each.title);
            press(button);
            advance(0.05);
            press(button);
        }
        advance(2);
        EXPECT_EQ(copied, each.copied);
        EXPECT_EQ(opened, each.opened);
        EXPECT_TRUE(gone.expired()) << each.title;
    }
}

TEST_F(ActivityTest, CopyingIsConfirmedForAMoment) {
    show(screen("A"));
    const auto sheet = share(article);
    press(row(*sheet, "Copy Link"));
    advance(0.3);
    EXPECT_NE(row(*sheet, "Copied"), nullptr);
    EXPECT_TRUE(sheet->isAppeared());
    settle();
    settle();
    EXPECT_FALSE(sheet->isAppeared());
}

TEST_F(ActivityTest, OnlyWebAddressesAreOfferedToTheBrowser) {
    for (const auto& [url, isWeb] : {std::pair{"https://example.org/a", true},
                                     {"HTTP://example.org", true},
                                     {"file:///etc/passwd", false},
                                     {"javascript://example.org/%0aalert(1)", false},
                                     {"example.org/a", false},
                                     {"http://", false},
                                     {"", false}}) {
        show(screen("A"));
        const auto sheet = share(url);
        EXPECT_EQ(row(*sheet, "Open in Browser") != nullptr, isWeb) << url;
        EXPECT_NE(row(*sheet, "Copy Link"), nullptr);
        window().setRootViewController(nullptr);
    }
}

TEST_F(ActivityTest, StandsAtTheLowerEdgeOfAPhoneAndByItsAnchorElsewhere) {
    for (const auto idiom : {UIUserInterfaceIdiom::phone, UIUserInterfaceIdiom::pad, UIUserInterfaceIdiom::mac}) {
        UIDevice::currentDevice().setUserInterfaceIdiom(idiom);
        const bool isPhone = idiom == UIUserInterfaceIdiom::phone;
        const auto root = screen("A");
        show(root, {834, 800});
        const auto anchor = make<UIView>(CGRect{500, 600, 50, 30});
        root->view()->addSubview(anchor);
        const auto sheet = make<UIActivityViewController>(article);
        sheet->popoverPresentationController.sourceView = anchor;
        root->presentViewController(sheet, true);
        settle();
        const CGRect frame = sheet->view()->convertRectToView(sheet->view()->bounds(), nullptr);
        EXPECT_EQ(frame.maxY(), isPhone ? 800 : 594);
        EXPECT_EQ(frame.width(), isPhone ? 834 : 320);
        EXPECT_EQ(row(*sheet, "Cancel") != nullptr, isPhone);
        key(UIKeyCode::down);
        EXPECT_EQ(window().focusedView(), row(*sheet, "Copy Link"));
        key(UIKeyCode::escape);
        settle();
        EXPECT_FALSE(sheet->isAppeared());
        window().setRootViewController(nullptr);
    }
}

TEST(LinkText, ShowsWhereALinkReallyLeads) {
    struct Case {
        const char *address, *host, *path;
        bool isWeb;
    };
    const Case cases[] = {
        {"https://example.org/a/b?c#d", "example.org", "/a/b?c#d", true},
        {"https://example.org/", "example.org", "", true},
        {"http://bank.example@evil.example:8080/x", "evil.example:8080", "/x", true},
        {"http://[::1]:80?q", "[::1]:80", "?q", true},
        {"https://example.org/@user", "example.org", "/@user", true},
        {"ftp://example.org/x", "example.org", "/x", false},
        {"http:///x", "http:///x", "", false},
        {"plain text", "plain text", "", false},
    };
    for (const Case& each : cases) {
        const LinkText text = linkText(each.address);
        EXPECT_EQ(text.host, each.host) << each.address;
        EXPECT_EQ(text.path, each.path) << each.address;
        EXPECT_EQ(text.isWeb, each.isWeb) << each.address;
    }
}

TEST(LinkText, LongTextsLoseTheirMiddleAndNeverHalfACharacter) {
    HeadlessPlatform platform;
    const UIFont font = UIFont::system(13);
    const std::string text = "/article/中文标题很长很长很长/一百二十三/the-end-of-it";
    const CGFloat full = TextMeasurer::shared().singleLineWidth(text, font);
    EXPECT_EQ(truncatedInMiddle(text, font, full), text);
    for (CGFloat width = full - 1; width > 20; width -= 7) {
        const std::string shorter = truncatedInMiddle(text, font, width);
        const auto gap = shorter.find("…");
        ASSERT_NE(gap, std::string::npos);
        EXPECT_LE(TextMeasurer::shared().singleLineWidth(shorter, font), width);
        EXPECT_TRUE(text.starts_with(shorter.substr(0, gap)));
        EXPECT_TRUE(text.ends_with(shorter.substr(gap + std::string("…").size())));
        const char* tail = shorter.c_str() + gap + std::string("…").size();
        EXPECT_NE(static_cast<unsigned char>(*tail) & 0xC0, 0x80);
    }
}

}  // namespace
}  // namespace ostrel
