#include "article/server/OstrelServerFramework.h"

#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <utility>

namespace ostrel {

namespace {

struct Slot {
    std::mutex mutex;  // guards framework
    std::shared_ptr<OstrelServerFramework> framework;
};

Slot& slot() {
    // Never destroyed: a thread may still look while the process ends.
    static Slot& slot = *new Slot;
    return slot;
}

}  // namespace

void OstrelServerFramework::install(std::shared_ptr<OstrelServerFramework> framework) {
    // The former one goes after the lock: what it cancels may look for the one in use.
    const std::lock_guard lock(slot().mutex);
    slot().framework.swap(framework);
}

std::shared_ptr<OstrelServerFramework> OstrelServerFramework::current() {
    const std::lock_guard lock(slot().mutex);
    return slot().framework;
}

OstrelServerFramework& OstrelServerFramework::installed() {
    const auto framework = current();
    if (!framework) {
        std::fputs(
            "OstrelArticle: no server framework is installed; call OstrelServerFramework::install first\n",
            stderr);
        std::abort();
    }
    return *framework;
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
