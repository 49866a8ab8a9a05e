#include "platform/uikit/text/UITextField.h"
#include "tests/backends/qt/QtTestWindow.h"

#include <gtest/gtest.h>
#include <QClipboard>
#include <QGuiApplication>
#include <QTest>

namespace ostrel::test {

namespace {

struct Form {
    std::shared_ptr<UIWindow> uiWindow = make<UIWindow>(CGSize{200, 200});
    std::shared_ptr<UITextField> first = make<UITextField>(CGRect(10, 10, 150, 30));
    std::shared_ptr<UITextField> second = make<UITextField>(CGRect(10, 60, 150, 30));
    std::unique_ptr<QtTestWindow> window;

    Form() {
        uiWindow->addSubview(first);
        uiWindow->addSubview(second);
        window = std::make_unique<QtTestWindow>(uiWindow);
        window->grab();
    }
    ~Form() { window.reset(); }
    QQuickItem* editor() { return window->view().editorItem(); }
    void focus(UITextField& field) {
        field.becomeFirstResponder();
        window->grab();
        ASSERT_TRUE(editor());
        ASSERT_TRUE(editor()->hasActiveFocus());
    }
    void type(const char* text) {
        for (const char* c = text; *c; ++c) QTest::keyClick(&window->window(), *c);
    }
};

TEST(Editing, KeysTypeIntoTheFieldWithTheFocusAndTextOfTheProgramReplacesTheirs) {
    Form form;
    EXPECT_FALSE(form.editor()) << "no editor before there is a focus";
    form.first->setMaximumLength(5);
    form.focus(*form.first);
    form.type("abc");
    QTest::keyClick(&form.window->window(), Qt::Key_Backspace);
    form.type("D");
    EXPECT_EQ(form.first->text(), "abD");
    EXPECT_EQ(form.second->text(), "");
    EXPECT_EQ(form.editor()->mapToScene({0, 0}), QPointF(10, 10));
    form.first->setText("set");
    form.window->grab();
    EXPECT_EQ(form.editor()->property("text").toString(), QStringLiteral("set"));
    form.type("!123");
    EXPECT_EQ(form.first->text(), "set!1") << "the length is limited";
    EXPECT_EQ(form.editor()->property("text").toString(), QStringLiteral("set!1"));
}

TEST(Editing, PressOfThePointerBringsTheEditor) {
    Form form;
    QTest::mouseClick(&form.window->window(), Qt::LeftButton, {}, {60, 75});
    form.window->grab();
    ASSERT_TRUE(form.editor());
    form.type("x");
    EXPECT_EQ(form.second->text(), "x");
}

TEST(Editing, TabGoesToTheNextFieldAndReturnIsReported) {
    Form form;
    form.focus(*form.first);
    form.type("1");
    QTest::keyClick(&form.window->window(), Qt::Key_Tab);
    form.window->grab();
    EXPECT_TRUE(form.second->isFirstResponder());
    form.type("2");
    EXPECT_EQ(form.first->text(), "1");
    EXPECT_EQ(form.second->text(), "2");
    int returns = 0;
    form.second->addTarget([&] { ++returns; }, UIControlEvent::editingDidEndOnExit);
    QTest::keyClick(&form.window->window(), Qt::Key_Return);
    EXPECT_EQ(returns, 1);
    form.window->grab();
    EXPECT_FALSE(form.editor());
}

TEST(Editing, ClipboardWorksWithTheUsualKeys) {
    Form form;
    form.focus(*form.first);
    form.type("copied");
    QTest::keyClick(&form.window->window(), Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(&form.window->window(), Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QGuiApplication::clipboard()->text(), QStringLiteral("copied"));
    form.focus(*form.second);
    QTest::keyClick(&form.window->window(), Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(form.second->text(), "copied");
}

TEST(Editing, SecretsAreNeverShown) {
    Form form;
    form.first->setSecureTextEntry(true);
    form.focus(*form.first);
    form.type("secret");
    EXPECT_EQ(form.first->text(), "secret");
    EXPECT_FALSE(form.editor()->property("displayText").toString().contains(QLatin1Char('s')));
    // Without the focus, the surface paints the same dots for another text of the same length.
    form.first->resignFirstResponder();
    const QImage dots = form.window->grab();
    form.first->setText("hidden");
    EXPECT_EQ(form.window->grab(), dots);
}

TEST(Editing, EndsWithTheFieldAndGivesTheKeysBack) {
    Form form;
    form.focus(*form.first);
    form.type("kept");
    form.first->removeFromSuperview();
    form.window->grab();
    EXPECT_FALSE(form.editor());
    EXPECT_TRUE(form.window->view().hasActiveFocus());
    EXPECT_EQ(form.first->text(), "kept");
}

}  // namespace

}  // namespace ostrel::test
