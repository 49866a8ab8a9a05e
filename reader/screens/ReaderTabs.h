#pragma once

#include "reader/screens/ReaderTab.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace ostrel {

/// The tabs of the reader, as a bar at the lower edge or as a sidebar at the left; the account is the last of them.
/// Shows an embedder a view of several controls that tells its owner, through handlers, which one was chosen. Main
/// thread.
class ReaderTabs final : public UIView {
public:
    static constexpr CGFloat barHeight = 54;
    static constexpr CGFloat sidebarWidth = 216;

    ReaderTabs();
    void initialise();
    /// A sidebar has a heading above the tabs, and the help.
    void setSidebar(bool sidebar);
    void setSelected(std::size_t index);
    void setAccountTitle(std::string title);
    const std::shared_ptr<ReaderTab>& account() const { return tabs_.back(); }
    /// Hidden unless the tabs are a sidebar.
    const std::shared_ptr<ReaderTab>& help() const { return help_; }

    /// A user chose the tab with this index.
    std::function<void(std::size_t)> chosen;
    std::function<void()> accountChosen;
    std::function<void()> helpChosen;

    void setFrame(const CGRect& frame) override;

private:
    void place();
    std::vector<std::shared_ptr<ReaderTab>> tabs_;
    std::shared_ptr<ReaderTab> help_;
    std::shared_ptr<UIView> line_;
    std::shared_ptr<UILabel> heading_;
    bool sidebar_ = false;
};

}  // namespace ostrel
