#pragma once

#include "platform/uikit/screens/UIViewController.h"

namespace ostrel {

/// The share sheet for one address: copy the link, open it in the browser, send it by mail. At the lower edge on the
/// phone idiom, as a popover where it has an anchor.
class UIActivityViewController : public UIViewController {
public:
    explicit UIActivityViewController(std::string url);
    const std::string& url() const { return url_; }

    void loadView() override;
    void viewDidLayoutSubviews() override;
    bool cancelOperation() override;
    bool pressesBegan(const UIPress& press) override;

private:
    void copyLink();
    void leaveAndOpen(const std::string& address);
    std::string url_;
    struct Parts;
    std::shared_ptr<Parts> parts_;
};

}  // namespace ostrel
