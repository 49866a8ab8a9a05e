#include "article/OstrelArticle.h"

namespace ostrel {

const double OstrelArticleVersionNumber = 1.0;
const char OstrelArticleVersionString[] =
    "@(#)PROGRAM:OstrelArticle  PROJECT:OstrelArticle-" OSTREL_ARTICLE_PROJECT_VERSION "\n";

}  // namespace ostrel
