#include "article/server/OstrelServerFramework.h"

#include <cstdio>
#include <cstdlib>
#include <utility>

namespace ostrel {

namespace {
std::shared_ptr<OstrelServerFramework>& slot() {
    static std::shared_ptr<OstrelServerFramework> framework;
    return framework;
}
}  // namespace

void OstrelServerFramework::install(std::shared_ptr<OstrelServerFramework> framework) {
    slot() = std::move(framework);
}

OstrelServerFramework& OstrelServerFramework::installed() {
    if (!slot()) {
        std::fputs(
            "OstrelArticle: no server framework is installed; call OstrelServerFramework::install first\n",
            stderr);
        std::abort();
    }
    return *slot();
}

OstrelServer& OstrelServer::shareServer() { return OstrelServerFramework::installed().shareServer(); }

OstrelRequestManager& OstrelRequestManager::defaultOstrelRequestManager() {
    return OstrelServerFramework::installed().requestManager();
}

std::shared_ptr<const OstrelServerHtmlResultObject> OstrelServerHtmlResultObject::initWithHtml(
    const std::string& html) {
    return OstrelServerFramework::installed().parseResult(html);
}

std::shared_ptr<UIViewController> OstrelLoginViewController::shareWithHandler(LoginHandler handler) {
    return OstrelServerFramework::installed().loginController(std::move(handler));
}

std::optional<NSDate> NSDjangoUTCConvert::djangoDateString(std::string_view text) {
    return OstrelServerFramework::installed().dateFromServerText(text);
}

std::string NSDjangoStringEncoder::encoder(std::string_view text) {
    return OstrelServerFramework::installed().encodeForQuery(text);
}

}  // namespace ostrel
