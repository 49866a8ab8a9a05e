#include "tests/platform/uikit/screens/ControllerTestSupport.h"

#include "platform/foundation/values/Text.h"
#include "platform/graphics/TextMeasurer.h"
#include "platform/uikit/screens/UIActivityViewController.h"
#include "platform/uikit/text/LinkText.h"

namespace ostrel {
namespace {

class ActivityTest : public ControllerTest {
protected:
    void SetUp() override {
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
    std::vector<std::string> copied, opened;
};

const std::string article = "http://127.0.0.1:8080/article/12?a=b&c=é";

TEST_F(ActivityTest, EachRowDoesItsWorkAndCloses) {
    using Texts = std::vector<std::string>;
    const std::tuple<const char*, Texts, Texts> cases[] = {
        {"Copy Link", {article}, {}},
        {"Open in Browser", {}, {article}},
        {"Send by Mail", {}, {"mailto:?body=http%3A%2F%2F127.0.0.1%3A8080%2Farticle%2F12%3Fa%3Db%26c%3D%C3%A9"}},
        {"Cancel", {}, {}},
    };
    show(screen("A"));
    for (const auto& [title, expectedCopies, expectedAddresses] : cases) {
        copied.clear();
        opened.clear();
        std::weak_ptr<UIViewController> gone;
        {
            const auto sheet = share(article);
            gone = sheet;
            UIView* const row = button(*sheet, title);
            press(row);
            press(row);
            // The row confirms for a moment that it has copied.
            const bool copies = !expectedCopies.empty();
            advance(copies ? 0.3 : 0);
            EXPECT_EQ(button(*sheet, "Copied") != nullptr, copies);
            EXPECT_TRUE(sheet->isAppeared() || !copies);
        }
        advance(2);
        EXPECT_EQ(copied, expectedCopies);
        EXPECT_EQ(opened, expectedAddresses);
        EXPECT_TRUE(gone.expired()) << title;
    }
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
        EXPECT_EQ(button(*sheet, "Open in Browser") != nullptr, isWeb) << url;
        EXPECT_NE(button(*sheet, "Copy Link"), nullptr);
    }
}

TEST_F(ActivityTest, HasACancelRowOnAPhoneOnlyAndFollowsTheKeys) {
    for (const auto idiom : {UIUserInterfaceIdiom::phone, UIUserInterfaceIdiom::mac}) {
        use(idiom);
        const bool isPhone = idiom == UIUserInterfaceIdiom::phone;
        show(screen("A"), {834, 800});
        const auto sheet = share(article);
        EXPECT_EQ(frameOf(*sheet).width(), isPhone ? 834 : 320);
        EXPECT_EQ(button(*sheet, "Cancel") != nullptr, isPhone);
        key(UIKeyCode::down);
        EXPECT_EQ(window().focusedView(), button(*sheet, "Copy Link"));
        key(UIKeyCode::escape);
        settle();
        EXPECT_FALSE(sheet->isAppeared());
    }
}

TEST(LinkText, ShowsWhereALinkReallyLeads) {
    const std::tuple<const char*, const char*, const char*, bool> cases[] = {
        {"https://example.org/a/b?c#d", "example.org", "/a/b?c#d", true},
        {"https://example.org/", "example.org", "", true},
        {"http://bank.example@evil.example:8080/x", "evil.example:8080", "/x", true},
        {"http://[::1]:80?q", "[::1]:80", "?q", true},
        {"https://example.org/@user", "example.org", "/@user", true},
        {"ftp://example.org/x", "example.org", "/x", false},
        {"http:///x", "http:///x", "", false},
        {"plain text", "plain text", "", false},
    };
    for (const auto& [address, host, path, isWeb] : cases) {
        const LinkText text = linkText(address);
        EXPECT_EQ(text.host, host) << address;
        EXPECT_EQ(text.path, path) << address;
        EXPECT_EQ(text.isWeb, isWeb) << address;
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
        const std::string tail = shorter.substr(gap + std::string("…").size());
        EXPECT_LE(TextMeasurer::shared().singleLineWidth(shorter, font), width);
        EXPECT_TRUE(text.starts_with(shorter.substr(0, gap)));
        EXPECT_TRUE(text.ends_with(tail));
        EXPECT_EQ(validUtf8Prefix(tail), tail.size());
    }
}

}  // namespace
}  // namespace ostrel
