#include "article/resources/ArticleBundles.h"

#include "platform/foundation/runloop/NSLog.h"

namespace ostrel {

namespace {

/// A bundle that stays open while it is looked for within the same outer bundle, because every row opens the bundles of
/// its pictures.
class OpenBundle final {
public:
    std::shared_ptr<NSBundle> open(const std::shared_ptr<NSBundle>& outer, std::string_view name) {
        if (!outer) return nullptr;
        if (outer_.lock() != outer || !bundle_) {
            outer_ = outer;
            bundle_ = outer->bundleForResource(name);
        }
        return bundle_;
    }

private:
    std::weak_ptr<NSBundle> outer_;
    std::shared_ptr<NSBundle> bundle_;
};

}  // namespace

std::shared_ptr<NSBundle> OstrelArticleBundle;

void loadOstrelArticleBundle() {
    if (OstrelArticleBundle) return;
    // A bundle object of its own, because a bundle keeps the language that was current when it was opened.
    const auto main = NSBundle::mainBundle();
    OstrelArticleBundle = main ? main->bundleForResource("OstrelArticle") : nullptr;
    if (!OstrelArticleBundle) NSLog("Warning: can NOT FOUND \"OstrelArticle.bundle\" in this target.");
}

std::string articleText(std::string_view key) {
    return OstrelArticleBundle ? OstrelArticleBundle->localizedString(key, "", "OstrelArticle") : std::string();
}

std::shared_ptr<NSBundle> openFrameworkArticleBundle() {
    static OpenBundle opened;
    return opened.open(NSBundle::bundleWithIdentifier(OstrelArticleBundleIdentifier), "Article");
}

std::shared_ptr<NSBundle> openApplicationArticleBundle() {
    static OpenBundle opened;
    return opened.open(NSBundle::mainBundle(), "OstrelArticle");
}

std::shared_ptr<const UIImage> imageInBundle(const std::shared_ptr<NSBundle>& bundle, std::string_view name) {
    if (!bundle) return nullptr;
    const auto path = bundle->pathForResource(name, "png");
    return path ? UIImage::imageWithContentsOfFile(*path) : nullptr;
}

}  // namespace ostrel
