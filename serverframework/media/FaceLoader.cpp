#include "serverframework/media/FaceLoader.h"

#include "platform/foundation/runloop/Clock.h"
#include "platform/foundation/runloop/RunLoop.h"

#include <algorithm>
#include <utility>

namespace ostrel {

namespace {

/// The bytes that a kept face takes besides its image.
constexpr std::size_t bookkeeping = 512;

bool isDecimalId(const std::string& text) {
    return !text.empty() && text.size() <= 19 &&
           std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

}  // namespace

FaceLoader::FaceLoader(Limits limits, Fetch fetch)
    : limits_(limits),
      fetch_(std::move(fetch)),
      cache_({.totalCost = limits.maximumCacheBytes, .costOfOne = limits.maximumCacheBytes / 4}) {}

FaceLoader::~FaceLoader() {
    if (!RunLoop::hasMain()) return;
    for (auto& [userId, handlers] : waiting_) {
        for (FaceHandler& handler : handlers)
            RunLoop::main().perform([handler = std::move(handler)] { handler(Data()); });
    }
}

void FaceLoader::load(const std::string& userId, FaceHandler handler) {
    if (!handler) return;
    if (!isDecimalId(userId)) {
        handler(Data());
        return;
    }
    const auto underWay = waiting_.find(userId);
    if (underWay != waiting_.end()) {
        underWay->second.push_back(std::move(handler));
        return;
    }
    std::string entityTag;
    if (const Face* face = cache_.find(userId)) {
        const double age = Clock::shared().monotonicSeconds() - face->askedAt;
        if (age < (face->image ? limits_.freshSeconds : limits_.missingSeconds)) {
            handler(Data(face->image));
            return;
        }
        entityTag = face->entityTag;
    }
    waiting_[userId].push_back(std::move(handler));
    fetch_(userId, entityTag, [self = weak_from_this(), userId](HttpAnswer answer) {
        if (const auto loader = self.lock()) loader->answered(userId, std::move(answer));
    });
}

void FaceLoader::answered(const std::string& userId, HttpAnswer answer) {
    Face* kept = cache_.find(userId);
    Data image = kept ? kept->image : Data();
    const double now = Clock::shared().monotonicSeconds();
    if (!answer.error.empty() || answer.status >= 500) {
        // The server said nothing about the face: the kept one is shown, and the next request asks again.
    } else if (answer.status == 304 && kept) {
        kept->askedAt = now;
    } else {
        image = answer.status == 200 && !answer.body.empty() ? Data::take(std::move(answer.body)) : Data();
        cache_.insert(userId, {image, image ? answer.entityTag : std::string(), now}, image.size() + bookkeeping);
    }
    const auto found = waiting_.find(userId);
    if (found == waiting_.end()) return;
    const std::vector<FaceHandler> handlers = std::exchange(found->second, {});
    waiting_.erase(found);
    for (const FaceHandler& handler : handlers) handler(image);
}

}  // namespace ostrel
