#include "articleserver/sample/SampleGallery.h"

#include "articleserver/common/ServerLimits.h"
#include "articleserver/media/ExifOrientation.h"

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <optional>
#include <sstream>
#include <unordered_set>

namespace ostrel {

namespace {

constexpr int imageQuality = 86;
constexpr int thumbnailQuality = 80;
constexpr int listVersion = 1;
/// Behind the server's own work and everybody else's.
constexpr int backgroundNiceness = 10;

std::string lineOf(const PaintOrder& order) {
    std::ostringstream line;
    line << static_cast<int>(order.scene) << ' ' << order.width << ' ' << order.height << ' ' << order.seed
         << ' ' << order.orientation << ' ' << order.file << ' ' << order.thumbnail << '\n';
    return line.str();
}

/// Absent for a line that is no order of ours.
std::optional<PaintOrder> orderOf(const std::string& line) {
    std::istringstream text(line);
    int scene = 0;
    PaintOrder order{};
    text >> scene >> order.width >> order.height >> order.seed >> order.orientation >> order.file >>
        order.thumbnail;
    bool isValid = text && scene >= 0 && scene <= static_cast<int>(SampleScene::Harbour) && order.width > 0 &&
                   order.width <= ServerLimits::avatarSide && order.height > 0 &&
                   order.height <= ServerLimits::avatarSide && order.orientation >= 1 &&
                   order.orientation <= 8 && MediaFolder::isName(order.file) &&
                   MediaFolder::isName(order.thumbnail);
    if (!isValid) return std::nullopt;
    order.scene = static_cast<SampleScene>(scene);
    return order;
}

}  // namespace

SampleGallery::SampleGallery(MediaFolder& media, std::filesystem::path list,
                             const std::vector<std::string>& named)
    : media_(media), list_(std::move(list)) {
    const std::unordered_set<std::string> wanted(named.begin(), named.end());
    std::ifstream file(list_);
    std::string line;
    if (!std::getline(file, line) || line != std::to_string(listVersion)) return;
    while (std::getline(file, line)) {
        auto order = orderOf(line);
        if (order && wanted.contains(order->file) &&
            !(media_.holds(order->file) && media_.holds(order->thumbnail)))
            take(std::move(*order));
    }
}

SampleGallery::~SampleGallery() {
    {
        std::lock_guard lock(mutex_);
        stopping_ = true;
    }
    painted_.notify_all();
    if (thread_.joinable()) thread_.join();
    media_.setSupplier(nullptr);
}

void SampleGallery::take(PaintOrder order) {
    byName_[order.file] = works_.size();
    byName_[order.thumbnail] = works_.size();
    works_.push_back({std::move(order)});
}

ServerResult<ServerDone> SampleGallery::order(std::vector<PaintOrder>& orders) {
    std::string list = std::to_string(listVersion) + "\n";
    for (PaintOrder& order : orders) {
        order.file = media_.newName("jpg");
        order.thumbnail = media_.newName("jpg");
        list += lineOf(order);
    }
    auto written = MediaFolder::write(list_, list);
    if (!written) return written.failure();
    std::lock_guard lock(mutex_);
    for (const PaintOrder& order : orders) take(order);
    return ServerDone{};
}

void SampleGallery::cancel() {
    std::lock_guard lock(mutex_);
    works_.clear();
    byName_.clear();
    ::unlink(list_.c_str());
}

void SampleGallery::start() {
    std::lock_guard lock(mutex_);
    if (works_.empty()) {
        ::unlink(list_.c_str());
        return;
    }
    media_.setSupplier([this](std::string_view name) { supply(name); });
    thread_ = std::thread([this] {
        // Linux keeps the niceness of threads, not of processes.
        ::setpriority(PRIO_PROCESS, static_cast<id_t>(::gettid()), backgroundNiceness);
        paintAll();
    });
}

void SampleGallery::supply(std::string_view name) {
    std::unique_lock lock(mutex_);
    auto found = byName_.find(std::string(name));
    if (found == byName_.end()) return;
    const std::size_t index = found->second;
    if (works_[index].state == State::Waiting && !stopping_) {
        works_[index].state = State::Painting;
        paint(index, lock);
    } else {
        painted_.wait(lock, [&] { return stopping_ || works_[index].state != State::Painting; });
    }
}

void SampleGallery::paintAll() {
    std::unique_lock lock(mutex_);
    for (std::size_t count = works_.size(); count > 0 && !stopping_; --count) {
        if (works_[count - 1].state != State::Waiting) continue;
        works_[count - 1].state = State::Painting;
        paint(count - 1, lock);
    }
    // What requests are painting is waited for, so that the list goes only when all is there.
    auto isOver = [](const Work& work) {
        return work.state == State::Painted || work.state == State::Failed;
    };
    painted_.wait(lock, [&] { return stopping_ || std::all_of(works_.begin(), works_.end(), isOver); });
    bool isDone = std::all_of(works_.begin(), works_.end(),
                              [](const Work& work) { return work.state == State::Painted; });
    if (isDone) ::unlink(list_.c_str());
}

void SampleGallery::paint(std::size_t index, std::unique_lock<std::mutex>& lock) {
    const PaintOrder order = works_[index].order;
    lock.unlock();
    bool isPainted = paintFiles(order);
    lock.lock();
    works_[index].state = isPainted ? State::Painted : State::Failed;
    painted_.notify_all();
}

bool SampleGallery::paintFiles(const PaintOrder& order) {
    ServerPicture picture = paintScene(order.scene, order.width, order.height, order.seed);
    const int orientation = order.orientation;
    const std::string bytes =
        orientation == 1 ? picture.jpeg(imageQuality)
                         : picture.oriented(inverseOrientation(orientation)).jpeg(imageQuality, orientation);
    const std::string small = picture.fitted(ServerLimits::thumbnailSide).jpeg(thumbnailQuality);
    return media_.addAs(order.file, bytes).isOk() && media_.addAs(order.thumbnail, small).isOk();
}

}  // namespace ostrel
