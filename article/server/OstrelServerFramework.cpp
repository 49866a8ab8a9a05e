#include "article/server/OstrelServerFramework.h"

#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <utility>

namespace ostrel {

namespace {

struct Slot {
    /// Guards `framework`.
    std::mutex mutex;
    std::shared_ptr<OstrelServerFramework> framework;
};

Slot& slot() {
    // Never destroyed, because a thread may still call `current` while the process ends.
    static Slot& slot = *new Slot;
    return slot;
}

}  // namespace

void OstrelServerFramework::install(std::shared_ptr<OstrelServerFramework> framework) {
    // The former framework is destroyed after the mutex is unlocked: handlers that it cancels may call `current`.
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
        std::fputs("OstrelArticle: no server framework is installed; call OstrelServerFramework::install first\n",
                   stderr);
        std::abort();
    }
    return *framework;
}

OstrelServer& OstrelServer::shareServer() { return OstrelServerFramework::installed().shareServer(); }

OstrelRequestManager& OstrelRequestManager::defaultOstrelRequestManager() {
    return OstrelServerFramework::installed().requestManager();
}

std::shared_ptr<const OstrelServerHtmlResultObject> OstrelServerHtmlResultObject::initWithHtml(const AnswerText& html) {
    if (const AnswerText::Parsed* parsed = html.parsed()) return parsed->result;
    return OstrelServerFramework::installed().parseResult(html.string());
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
