#include "backends/qt/paint/PictureStore.h"

#include <algorithm>
#include <cmath>
#include <QBuffer>
#include <QImageReader>

namespace ostrel {

namespace {

constexpr std::size_t maximumBytes = 32 << 20;
// The memory that decoding one picture may take: 32 megapixels of a PNG, far more of a JPEG, which is reduced while it
// is decoded.
constexpr std::int64_t maximumDecodingBytes = 128 << 20;
// The pixels of one decoded picture; a picture that should be larger is shown enlarged.
constexpr double maximumPixels = 8 << 20;
constexpr std::size_t maximumWanted = 256;
constexpr int maximumSide = 8192;
constexpr qint64 smallPixels = 128 * 128;
constexpr std::size_t smallBytes = 24 << 10;

}  // namespace

namespace {

const char* formatName(ImageFormat format) {
    switch (format) {
    case ImageFormat::png: return "png";
    case ImageFormat::jpeg: return "jpeg";
    case ImageFormat::gif: return "gif";
    case ImageFormat::webp: return "webp";
    }
    return "";
}

/// The bytes that decoding the picture at this size takes, the result included.
std::int64_t decodingBytes(const ImageHeader& header, const PictureKey& key) {
    std::int64_t width = header.pixelWidth, height = header.pixelHeight;
    if (header.format == ImageFormat::jpeg) {
        // ITU-T T.81 blocks of 8 by 8 are decoded as 4 by 4, 2 by 2 or 1 by 1 when that is large enough.
        for (int i = 0; i < 3 && width / 2 >= key.width && height / 2 >= key.height; ++i) {
            width /= 2;
            height /= 2;
        }
    }
    return 4 * width * height + 4 * std::int64_t(key.width) * key.height + header.coefficientBytes;
}

}  // namespace

PictureStore::PictureStore(std::function<void()> decoded)
    : decoded_(std::move(decoded)), pictures_({.totalCost = maximumBytes}) {}

PictureStore::~PictureStore() {
    {
        const std::lock_guard lock(mutex_);
        stopping_ = true;
        changed_.notify_all();
    }
    if (thread_.joinable()) thread_.join();
}

PictureKey PictureStore::keyFor(const UIImage& image, double width, double height) {
    const double points = std::max(image.size().width, 1e-6);
    const ImageHeader& header = image.header();
    // The header describes the first representation; the others show the same picture at other sizes.
    double largestWidth = header.pixelWidth, largestHeight = header.pixelHeight;
    const CGFloat scale = image.representation(width / points).scale;
    if (scale > 0) {
        largestWidth = std::max(largestWidth, image.size().width * scale);
        largestHeight = std::max(largestHeight, image.size().height * scale);
    }
    const auto side = [](double wanted, double largest) {
        return std::clamp(std::ceil(std::min(wanted, largest) - 1e-6), 1.0, double(maximumSide));
    };
    double wide = side(width, largestWidth), high = side(height, largestHeight);
    if (wide * high > maximumPixels) {
        const double factor = std::sqrt(maximumPixels / (wide * high));
        wide = std::max(1.0, std::floor(wide * factor));
        high = std::max(1.0, std::floor(high * factor));
    }
    return {image.identifier(), static_cast<int>(wide), static_cast<int>(high)};
}

bool PictureStore::isSmall(const UIImage& image, const PictureKey& key) {
    const ImageHeader& header = image.header();
    const double scale = key.width / std::max(image.size().width, 1e-6);
    return qint64(header.pixelWidth) * header.pixelHeight <= smallPixels &&
           image.representation(scale).data.size() <= smallBytes;
}

QImage PictureStore::obtain(const UIImage& image, const PictureKey& key) {
    QImage picture;
    {
        const std::lock_guard lock(mutex_);
        if (find(key, picture)) return picture;
    }
    picture = decode(image, key);
    const std::lock_guard lock(mutex_);
    store(key, picture);
    return picture;
}

QImage PictureStore::request(const std::shared_ptr<const UIImage>& image, const PictureKey& key, bool& isKnown) {
    const std::lock_guard lock(mutex_);
    QImage picture;
    isKnown = find(key, picture);
    if (isKnown || underWay_ == key) return picture;
    const auto same = std::find_if(wanted_.begin(), wanted_.end(), [&](const Wanted& w) { return w.key == key; });
    if (same != wanted_.end()) {
        std::rotate(same, same + 1, wanted_.end());
    } else {
        wanted_.push_back({key, image});
        // The oldest request belongs to a view that has long left the screen; a view that returns requests again.
        if (wanted_.size() > maximumWanted) {
            done_.push_back(wanted_.front().key);
            wanted_.erase(wanted_.begin());
        }
    }
    if (!thread_.joinable()) thread_ = std::thread([this] { run(); });
    changed_.notify_one();
    return picture;
}

std::vector<PictureKey> PictureStore::takeDecoded() {
    const std::lock_guard lock(mutex_);
    return std::exchange(done_, {});
}

std::size_t PictureStore::storedBytes() const {
    const std::lock_guard lock(mutex_);
    return pictures_.totalCost();
}

QImage PictureStore::decode(const UIImage& image, const PictureKey& key) {
    const double scale = key.width / std::max(image.size().width, 1e-6);
    const UIImage::Representation& representation = image.representation(scale);
    const QByteArray bytes = QByteArray::fromRawData(reinterpret_cast<const char*>(representation.data.bytes()),
                                                     static_cast<qsizetype>(representation.data.size()));
    // The representation for another scale may be a file of another format.
    const auto header = ImageHeader::read(representation.data);
    if (!header || decodingBytes(*header, key) > maximumDecodingBytes) return {};
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    // The reader gets the format of the header, so that Qt does not try another decoder on the bytes.
    QImageReader reader(&buffer, formatName(header->format));
    reader.setAutoDetectImageFormat(false);
    reader.setAutoTransform(true);
    const QSize wanted(key.width, key.height);
    const bool turned = reader.transformation() & QImageIOHandler::TransformationRotate90;
    const QSize stored = reader.size();
    // The JPEG decoder reduces while it decodes, which is several times as fast.
    if (stored.isValid()) reader.setScaledSize(turned ? wanted.transposed() : wanted);
    QImage picture = reader.read();
    if (picture.isNull()) return picture;
    if (picture.size() != wanted) {
        picture = picture.scaled(wanted, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    }
    return std::move(picture).convertToFormat(picture.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied
                                                                        : QImage::Format_RGB32);
}

bool PictureStore::find(const PictureKey& key, QImage& picture) {
    const QImage* stored = pictures_.find(key);
    if (stored) picture = *stored;
    return stored != nullptr;
}

void PictureStore::store(const PictureKey& key, const QImage& picture) {
    // A picture that could not be decoded has no bytes, but its entry has.
    constexpr std::size_t bookkeeping = 256;
    if (!pictures_.find(key))
        pictures_.insert(key, picture, static_cast<std::size_t>(picture.sizeInBytes()) + bookkeeping);
}

void PictureStore::run() {
    std::unique_lock lock(mutex_);
    for (;;) {
        changed_.wait(lock, [&] { return stopping_ || !wanted_.empty(); });
        if (stopping_) return;
        const Wanted next = std::move(wanted_.back());
        wanted_.pop_back();
        underWay_ = next.key;
        lock.unlock();
        const QImage picture = decode(*next.image, next.key);
        lock.lock();
        underWay_ = {};
        store(next.key, picture);
        done_.push_back(next.key);
        if (done_.size() == 1) {
            lock.unlock();
            decoded_();
            lock.lock();
        }
    }
}

}  // namespace ostrel
