#pragma once

#include "platform/foundation/resources/NSBundle.h"
#include "platform/graphics/UIImage.h"

#include <memory>
#include <string>
#include <string_view>

namespace ostrel {

/// The name under which a host registers the folder that contains the framework's "Article.bundle".
inline constexpr char OstrelArticleBundleIdentifier[] = "org.ostrel.OstrelArticle";

/// The bundle of the module's texts, one for the process. Null before the first article list is made, and when the main
/// bundle has no "OstrelArticle.bundle".
extern std::shared_ptr<NSBundle> OstrelArticleBundle;

/// Loads `OstrelArticleBundle` unless it is loaded; logs a warning when it is not found.
void loadOstrelArticleBundle();

/// The text for `key` in the user's language. The key itself when the bundle has no such text; an empty text while the
/// bundle is not loaded.
std::string articleText(std::string_view key);

/// Opens the framework's own "Article" bundle (pictures of buttons and add tiles); null when it is missing.
std::shared_ptr<NSBundle> openFrameworkArticleBundle();
/// Opens the application's "OstrelArticle" bundle (pictures that are shown until others arrive); null when it is
/// missing.
std::shared_ptr<NSBundle> openApplicationArticleBundle();

/// The image "<name>.png" of `bundle`; null when the bundle or the file is missing.
std::shared_ptr<const UIImage> imageInBundle(const std::shared_ptr<NSBundle>& bundle, std::string_view name);

}  // namespace ostrel
