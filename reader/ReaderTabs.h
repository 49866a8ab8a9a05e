#pragma once

#include "platform/uikit/controls/UIImageView.h"
#include "platform/uikit/text/UILabel.h"
#include "platform/uikit/view/UIControl.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace ostrel {

/// One entry of the tabs: a symbol with a title below it (bar) or beside it (sidebar).
class ReaderTab final : public UIControl {
public:
    ReaderTab(std::shared_ptr<const UIImage> symbol, std::string title);
    void initialise();
    void setTitle(std::string title);
    const std::string& title() const { return title_; }
    void setBeside(bool beside);
    void layoutSubviews() override;
    void setFrame(const CGRect& frame) override;

protected:
    void controlStateDidChange() override;

private:
    void place();
    std::shared_ptr<const UIImage> symbol_;
    std::string title_;
    std::shared_ptr<UIImageView> image_;
    std::shared_ptr<UILabel> label_;
    bool beside_ = false;
};

/// The tabs of the reader, as a bar at the lower edge or as a sidebar at the left, and the account below or last.
class ReaderTabs final : public UIView {
public:
    static constexpr CGFloat barHeight = 54;
    static constexpr CGFloat sidebarWidth = 216;

    ReaderTabs();
    void initialise();
    void setSidebar(bool sidebar);
    void setSelected(std::size_t index);
    void setAccountTitle(std::string title);
    const std::shared_ptr<ReaderTab>& account() const { return tabs_.back(); }
    void setFrame(const CGRect& frame) override;

    std::function<void(std::size_t)> chosen;
    std::function<void()> accountChosen;
    std::function<void()> helpChosen;
    /// Only the sidebar has it.
    const std::shared_ptr<ReaderTab>& help() const { return help_; }

private:
    void place();
    std::vector<std::shared_ptr<ReaderTab>> tabs_;
    std::shared_ptr<ReaderTab> help_;
    std::shared_ptr<UIView> line_;
    std::shared_ptr<UILabel> heading_;
    bool sidebar_ = false;
};

}  // namespace ostrel
