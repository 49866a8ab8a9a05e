#pragma once

#include "platform/uikit/controls/UIActivityIndicatorView.h"
#include "platform/uikit/controls/UIButton.h"
#include "platform/uikit/events/UITransfer.h"
#include "platform/uikit/picker/MediaGridView.h"
#include "platform/uikit/screens/UIViewController.h"

#include <atomic>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace ostrel {

class UIImagePickerController;

/// The screen of an image picker: the grid of pictures and clips, or a sentence when there are none, and buttons for
/// other files. A chosen file is opened off the main thread before the picker's delegate gets it. Main thread.
class UIImagePickerGridController final : public UIViewController {
public:
    /// Files that are taken of one drop.
    static constexpr std::size_t mostAtOnce = 50;

    UIImagePickerGridController();
    ~UIImagePickerGridController() override;

    /// Opens the files and passes on the usable ones; shows the reason when no file is usable.
    void choose(std::vector<std::string> paths);
    /// The same with the encoded bytes of a picture.
    void choosePicture(Data picture);
    bool takes(const UITransferItems& items);
    void take(const UITransferItems& items);
    void paste();
    void setDropHover(bool isHovering);
    const std::shared_ptr<MediaGridView>& grid() const { return grid_; }

    void viewDidLoad() override;
    void viewWillAppear(bool animated) override;
    void viewDidDisappear(bool animated) override;
    void viewDidLayoutSubviews() override;

private:
    struct Choice;
    std::shared_ptr<UIImagePickerController> picker();
    std::weak_ptr<UIImagePickerGridController> weakSelf();
    bool wants(MediaKind kind);
    void search();
    void show(MediaLibrary::Contents contents);
    void openOtherFile();
    void open(std::vector<std::string> paths, Data picture);
    void opened(std::vector<Choice> choices);
    void setBusy(const std::vector<std::string>& paths, bool isBusy);
    void updateWheel();
    void showProblem(const std::string& problem);

    std::shared_ptr<MediaThumbnails> thumbnails_;
    std::shared_ptr<MediaGridView> grid_;
    std::shared_ptr<UIActivityIndicatorView> wheel_;
    std::shared_ptr<UIView> empty_, dropFrame_;
    std::shared_ptr<UIImageView> emptySymbol_;
    std::shared_ptr<UILabel> emptyTitle_, emptyText_, footer_;
    std::shared_ptr<UIButton> emptyButton_;
    std::shared_ptr<std::atomic<bool>> searchStopped_;
    std::set<std::string> busy_;  ///< being opened, or handed on and still being worked at
    int opening_ = 0;
    bool isSearching_ = false;
};

}  // namespace ostrel
