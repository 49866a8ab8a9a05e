#pragma once

// The public face of the article module. A host
//  1. installs a platform backend (clock, run loop, text measurer, locale) and makes a UIWindow,
//  2. says where the resources are: NSBundle::setMainBundlePath, and NSBundle::registerBundle with
//     `OstrelArticleBundleIdentifier`,
//  3. installs a server framework: OstrelServerFramework::install,
//  4. makes a UIArticleListTableViewController and puts it into a UINavigationController.

#include "article/detail/UIArticleViewController.h"
#include "article/detail/UICommentViewController.h"
#include "article/list/UIArticleListTableViewController.h"
#include "article/records/ArticleNotifications.h"
#include "article/resources/ArticleBundles.h"
#include "article/server/OstrelServerFramework.h"

namespace ostrel {

/// The version of the module: major and minor number as one number.
extern const double OstrelArticleVersionNumber;
/// What identifies the build: "@(#)PROGRAM:OstrelArticle  PROJECT:OstrelArticle-<version>\n".
extern const char OstrelArticleVersionString[];

}  // namespace ostrel
