#include "tour/guide/EditorGuide.h"

#include "article/editor/MediaCollectionViewCell.h"
#include "article/editor/UIArticleEditViewController.h"
#include "platform/uikit/picker/MediaGridCell.h"
#include "reader/screens/ReaderTabs.h"

#include <algorithm>

namespace ostrel {

namespace {

/// A clip of three seconds is converted in this time even on a machine that is busy with other work.
constexpr int conversionMilliseconds = 60000;
constexpr int postMilliseconds = 30000;

}  // namespace

UIArticleEditViewController* EditorGuide::editor() {
    const auto navigation = reader_.root().myArticles().navigationController();
    return navigation ? dynamic_cast<UIArticleEditViewController*>(navigation->topViewController().get()) : nullptr;
}

UIArticleEditMediaTableViewCell* EditorGuide::strip(Strip kind) {
    auto* const screen = editor();
    if (!screen) return nullptr;
    if (kind == Strip::images) return screen->imagesCell().get();
    return screen->videosCell().get();
}

std::size_t EditorGuide::itemCount(Strip kind) {
    auto* const screen = editor();
    if (!screen) return 0;
    if (kind == Strip::images) {
        return screen->imagesCell() && screen->imagesCell()->imagesArray() ? screen->imagesCell()->imagesArray()->size()
                                                                           : 0;
    }
    return screen->videosCell() && screen->videosCell()->videosArray() ? screen->videosCell()->videosArray()->size()
                                                                       : 0;
}

UICollectionViewCell* EditorGuide::tile(Strip kind, std::size_t index) {
    const CGFloat top = 44, bottom = reader_.rootView().frame().height() - ReaderTabs::barHeight;
    for (int i = 0; i < 30 && editor(); ++i) {
        double above = 1;
        if (auto* const row = strip(kind)) {
            const auto cell = row->collectionView()->cellForItemAtIndexPath({0, static_cast<std::int64_t>(index)});
            const CGRect rect = window_.rectOf(cell ? static_cast<UIView&>(*cell) : *row);
            if (cell && row->window() && rect.minY() >= top && rect.maxY() <= bottom) return cell.get();
            above = rect.minY() < top ? -1 : 1;
        }
        const CGSize size = reader_.rootView().frame().size;
        const CGPoint middle{size.width * 0.5, size.height * 0.5};
        if (options_.reader.idiom == UIUserInterfaceIdiom::mac) {
            input_.wheel(middle, above > 0 ? -2 : 2);
        } else {
            input_.swipe(middle, {middle.x, middle.y - above * 90}, 120, 120);
        }
        window_.settle();
    }
    return nullptr;
}

void EditorGuide::pick(Strip kind, const std::string& file) {
    const std::size_t before = itemCount(kind);
    press(tile(kind, before), "the add tile");
    MediaGridCell* wanted = nullptr;
    check(window_.waitFor([&] {
        for (MediaGridCell* candidate : window_.all<MediaGridCell>()) {
            if (candidate->path().ends_with("/" + file)) wanted = candidate;
        }
        return wanted != nullptr;
    }),
          "the picker offers " + file);
    window_.settle();
    if (!wanted) return;
    press(wanted, file);
    check(window_.waitFor([&] { return itemCount(kind) == before + 1; },
                          kind == Strip::videos ? conversionMilliseconds : 5000),
          file + " is added");
    check(window_.waitFor([&] { return window_.first<MediaGridCell>() == nullptr; }), "the picker leaves");
    window_.settle();
}

void EditorGuide::caption(std::size_t index, const std::string& text) {
    auto* const cell = dynamic_cast<MediaCollectionViewCell*>(tile(Strip::images, index));
    if (!check(cell != nullptr, "the tile is on screen")) return;
    press(cell->myTextView().get(), "its caption");
    window_.settle();
    input_.key(Qt::Key_A, {}, Qt::ControlModifier);
    input_.type(text);
    check(window_.waitFor([&] { return (*editor()->imagesCell()->imagesArray())[index]->text() == text; }),
          "the item has the caption " + text);
}

void EditorGuide::remove(std::size_t index) {
    auto* const cell = dynamic_cast<MediaCollectionViewCell*>(tile(Strip::images, index));
    if (!check(cell != nullptr, "the tile is on screen")) return;
    const std::size_t before = itemCount(Strip::images);
    press(cell->removeButton().get(), "its badge");
    check(window_.waitFor([&] { return itemCount(Strip::images) == before - 1; }), "the item has left");
    window_.settle();
}

void EditorGuide::startReordering() {
    auto* const cell = tile(Strip::images, 0);
    if (!check(cell != nullptr, "the first tile is on screen")) return;
    const CGRect rect = window_.rectOf(*cell);
    hold({rect.minX() + 50, rect.midY()});
    check(window_.waitFor([&] { return strip(Strip::images) && strip(Strip::images)->isItemShake(); }),
          "a long press makes the tiles shake");
}

void EditorGuide::endReordering() {
    const CGSize size = reader_.rootView().frame().size;
    const CGPoint from{size.width * 0.5, 70};
    if (options_.reader.idiom == UIUserInterfaceIdiom::mac) {
        input_.wheel({size.width * 0.5, size.height * 0.5}, -1);
    } else {
        input_.swipe(from, {from.x, from.y + 60}, 120, 60);
    }
    check(window_.waitFor([&] { return strip(Strip::images) && !strip(Strip::images)->isItemShake(); }),
          "scrolling ends it");
    window_.settle();
}

void EditorGuide::swap(std::size_t from, std::size_t to) {
    if (!check(itemCount(Strip::images) > std::max(from, to), "there are enough pictures")) return;
    const auto& items = editor()->imagesCell()->imagesArray();
    const auto first = (*items)[from], second = (*items)[to];
    const auto cells = editor()->imagesCell()->collectionView();
    const auto fromCell = cells->cellForItemAtIndexPath({0, static_cast<std::int64_t>(from)});
    const auto toCell = cells->cellForItemAtIndexPath({0, static_cast<std::int64_t>(to)});
    if (!check(fromCell && toCell, "both tiles are there")) return;
    const CGRect start = window_.rectOf(*fromCell), end = window_.rectOf(*toCell);
    drag({start.minX() + 50, start.midY()}, {end.minX() + 50, end.midY() + (to > from ? 12 : -12)});
    check(window_.waitFor([&] {
        const auto& now = editor()->imagesCell()->imagesArray();
        return (*now)[from] == second && (*now)[to] == first;
    }),
          "the two items have changed places");
}

void EditorGuide::post() {
    if (!check(editor() != nullptr, "the editor is open")) return;
    const CGFloat width = reader_.rootView().frame().width();
    check(editor()->navigationItem().rightBarButtonItem()->isEnabled(), "POST is enabled");
    press({width - 36, 22});
    check(window_.waitFor([&] { return editor() == nullptr; }, postMilliseconds), "the editor closes when all is sent");
    window_.settle();
}

}  // namespace ostrel
