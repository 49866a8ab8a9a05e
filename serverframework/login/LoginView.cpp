#include "serverframework/login/LoginView.h"

#include "platform/uikit/view/UIDevice.h"
#include "serverframework/account/SignInService.h"
#include "serverframework/login/LoginLayout.h"

#include <algorithm>
#include <utility>

namespace ostrel {

namespace {

struct Words {
    const char* heading;
    const char* subtitle;
    const char* button;
    const char* busy;
};

const Words& wordsOf(LoginView::Mode mode) {
    static constexpr Words signIn = {"Welcome back", "Sign in to write, like and comment.", "Sign In", "Signing In…"};
    static constexpr Words create = {"Create your account", "A name and a password are all it takes.", "Create Account",
                                     "Creating Account…"};
    return mode == LoginView::Mode::signIn ? signIn : create;
}

CGFloat heightOf(const UILabel& label, CGFloat width) {
    return std::ceil(label.sizeThatFits({width, CGFLOAT_MAX_TEXT}).height);
}

}  // namespace

std::shared_ptr<UILabel> LoginView::addLabel(const std::shared_ptr<UIView>& to, const UIFont& font, UIColor color) {
    auto label = make<UILabel>();
    label->setFont(font);
    label->setTextColor(color);
    label->setNumberOfLines(0);
    label->setLineBreakMode(NSLineBreakMode::byWordWrapping);
    to->addSubview(label);
    return label;
}

std::shared_ptr<UITextField> LoginView::addField(std::string placeholder) {
    auto field = make<UITextField>();
    field->setFont(UIFont::system(17));
    field->setPlaceholder(std::move(placeholder));
    card_->addSubview(field);
    return field;
}

void LoginView::initialise() {
    setBackgroundColor(UIColor::groupedBackground());
    scroll_ = make<UIScrollView>();
    addSubview(scroll_);

    heading_ = addLabel(scroll_, UIFont::mediumSystem(28), UIColor::label());
    subtitle_ = addLabel(scroll_, UIFont::system(15), UIColor::secondaryLabel());
    modeControl_ = make<UISegmentedControl>(std::vector<std::string>{"Sign In", "Create Account"});
    scroll_->addSubview(modeControl_);

    card_ = make<UIView>();
    card_->setBackgroundColor(UIColor::secondaryGroupedBackground());
    card_->setCornerRadius(12);
    scroll_->addSubview(card_);
    nameTitle_ = addLabel(card_, UIFont::system(17), UIColor::label());
    nameTitle_->setText("Name");
    nameField_ = addField("Your name");
    nameField_->setMaximumLength(SignInService::longestName);
    nameField_->setAccessibility(AccessibilityRole::textField, "Name");
    separator_ = make<UIView>();
    separator_->setBackgroundColor(UIColor::separator());
    card_->addSubview(separator_);
    passwordTitle_ = addLabel(card_, UIFont::system(17), UIColor::label());
    passwordTitle_->setText("Password");
    passwordField_ = addField("Required");
    passwordField_->setSecureTextEntry(true);
    passwordField_->setMaximumLength(SignInService::longestPassword);
    passwordField_->setAccessibility(AccessibilityRole::textField, "Password");

    hint_ = addLabel(scroll_, UIFont::system(13), UIColor::secondaryLabel());
    hint_->setText("At least " + std::to_string(SignInService::shortestPassword) + " characters for the password.");
    errorLabel_ = addLabel(scroll_, UIFont::system(15), UIColor::destructive());

    button_ = make<UIButton>();
    button_->setTitleFont(UIFont::mediumSystem(17));
    button_->setTitleColor(UIColor::white());
    button_->setTitleColor(UIColor::white(), UIControlState::disabled);
    button_->setBackgroundColor(UIColor::tint(), UIControlState::normal);
    button_->setBackgroundColor(UIColor::rgb(0x1757BA), UIControlState::highlighted);
    button_->setBackgroundColor(UIColor::tint().withAlpha(0.6f), UIControlState::disabled);
    button_->setCornerRadius(12);
    scroll_->addSubview(button_);
    spinner_ = make<UIActivityIndicatorView>();
    spinner_->setColor(UIColor::white());
    button_->addSubview(spinner_);

    setMode(Mode::signIn);
    setError({});
}

void LoginView::setMode(Mode mode) {
    mode_ = mode;
    modeControl_->setSelectedSegmentIndex(mode == Mode::signIn ? 0 : 1);
    const Words& words = wordsOf(mode);
    heading_->setText(words.heading);
    subtitle_->setText(words.subtitle);
    button_->setTitle(words.button);
    button_->setTitle(words.busy, UIControlState::disabled);
    hint_->setHidden(mode == Mode::signIn);
    setNeedsLayout();
}

void LoginView::setBusy(bool busy) {
    button_->setEnabled(!busy);
    modeControl_->setEnabled(!busy);
    if (busy) {
        spinner_->startAnimating();
    } else {
        spinner_->stopAnimating();
    }
}

void LoginView::setError(const std::string& sentence) {
    if (errorLabel_->text() == sentence && errorLabel_->isHidden() == sentence.empty()) return;
    errorLabel_->setText(sentence);
    errorLabel_->setHidden(sentence.empty());
    setNeedsLayout();
    const auto& announce = UIApplication::sharedApplication().announce;
    if (!sentence.empty() && announce) announce(sentence);
}

void LoginView::layoutSubviews() {
    const CGSize size = bounds().size;
    const CGFloat width = LoginLayout::columnWidth(size);
    LoginLayout::Texts texts;
    texts.heading = heightOf(*heading_, width);
    texts.subtitle = heightOf(*subtitle_, width);
    if (!hint_->isHidden()) texts.hint = heightOf(*hint_, width);
    if (!errorLabel_->isHidden()) texts.error = heightOf(*errorLabel_, width);
    const CGSize unbounded = {CGFLOAT_MAX_TEXT, CGFLOAT_MAX_TEXT};
    texts.rowTitleWidth =
        std::max(nameTitle_->sizeThatFits(unbounded).width, passwordTitle_->sizeThatFits(unbounded).width);

    const LoginLayout layout = LoginLayout::make(size, texts);
    scroll_->setFrame({0, 0, size.width, size.height});
    scroll_->setContentSize({size.width, layout.contentHeight});
    heading_->setFrame(layout.heading);
    subtitle_->setFrame(layout.subtitle);
    modeControl_->setFrame(layout.mode);
    card_->setFrame(layout.card);
    nameTitle_->setFrame(layout.nameTitle);
    nameField_->setFrame(layout.nameField);
    separator_->setFrame(layout.separator);
    passwordTitle_->setFrame(layout.passwordTitle);
    passwordField_->setFrame(layout.passwordField);
    hint_->setFrame(layout.hint);
    errorLabel_->setFrame(layout.error);
    button_->setFrame(layout.button);
    constexpr CGFloat spinnerSide = 20;
    spinner_->setFrame({16, (LoginLayout::buttonHeight - spinnerSide) / 2, spinnerSide, spinnerSide});
}

}  // namespace ostrel
