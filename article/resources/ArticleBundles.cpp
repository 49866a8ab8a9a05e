#include "article/resources/ArticleBundles.h"

#include "platform/foundation/NSLog.h"

namespace ostrel {

std::shared_ptr<NSBundle> OstrelArticleBundle;

void loadOstrelArticleBundle() {
    if (OstrelArticleBundle) return;
    OstrelArticleBundle = openApplicationArticleBundle();
    if (!OstrelArticleBundle) NSLog("Warning: can NOT FOUND \"OstrelArticle.bundle\" in this target.");
}

std::string articleText(std::string_view key) {
    return OstrelArticleBundle ? OstrelArticleBundle->localizedString(key, "", "OstrelArticle")
                               : std::string();
}

std::shared_ptr<NSBundle> openFrameworkArticleBundle() {
    const auto framework = NSBundle::bundleWithIdentifier(OstrelArticleBundleIdentifier);
    return framework ? framework->bundleForResource("Article") : nullptr;
}

std::shared_ptr<NSBundle> openApplicationArticleBundle() {
    const auto main = NSBundle::mainBundle();
    return main ? main->bundleForResource("OstrelArticle") : nullptr;
}

std::shared_ptr<const UIImage> imageInBundle(const std::shared_ptr<NSBundle>& bundle, std::string_view name) {
    if (!bundle) return nullptr;
    const auto path = bundle->pathForResource(name, "png");
    return path ? UIImage::imageWithContentsOfFile(*path) : nullptr;
}

}  // namespace ostrel
