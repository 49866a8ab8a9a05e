#pragma once

#include "platform/foundation/values/Data.h"
#include "platform/graphics/CGImage.h"
#include "platform/graphics/Geometry.h"
#include "platform/graphics/Path.h"

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ostrel {

enum class ImageFormat { png, jpeg, gif, webp };

/// The facts in the header of a picture file, read without decoding.
struct ImageHeader {
    ImageFormat format = ImageFormat::png;
    int pixelWidth = 0, pixelHeight = 0;  ///< of the upright picture, after the EXIF orientation
    int orientation = 1;                  ///< EXIF/TIFF orientation, 1 to 8
    /// The bytes of the whole picture that a decoder has to keep at any target size: the coefficients of a
    /// JPEG whose scans do not each hold all components, such as a progressive one. 0 for other pictures.
    std::int64_t coefficientBytes = 0;

    /// Absent when the bytes are no PNG, JPEG, GIF or WebP picture, or a side is not 1 to 65,500 pixels long.
    static std::optional<ImageHeader> read(const Data& data);
};

/// An immutable picture: encoded bytes, which the backend decodes off the main thread at their size on
/// screen, or a vector symbol. Shared by pointer. Any thread.
class UIImage final {
public:
    /// One encoded form of the picture, and the device scale for which it is meant.
    struct Representation {
        Data data;
        CGFloat scale = 1;
    };

    /// Null when the bytes are no picture. `scale`: pixels a point.
    static std::shared_ptr<const UIImage> imageWithData(const Data& data, CGFloat scale = 1);
    /// One pixel is one point. Null when there is no bitmap.
    static std::shared_ptr<const UIImage> imageWithCGImage(std::shared_ptr<const CGImage> bitmap);
    /// Loads "<name>.png" and its neighbours "<name>@2x.png" and "<name>@3x.png"; null when the file is no
    /// picture. The same path gives the same image while one is alive.
    static std::shared_ptr<const UIImage> imageWithContentsOfFile(const std::string& path);
    /// A symbol of the platform, 24 points square, drawn in the tint colour of its view: "chevron.right",
    /// "chevron.left", "chevron.down", "checkmark", "info.circle", "plus", "square.and.arrow.up", "xmark",
    /// "trash", "pencil", "link", "safari", "envelope", "person.crop.circle", "arrow.clockwise", "ellipsis",
    /// "exclamationmark.circle", "doc.on.doc". Null for unknown names.
    static std::shared_ptr<const UIImage> systemImageNamed(std::string_view name);

    /// In points.
    CGSize size() const { return size_; }
    bool isSymbol() const { return path_ != nullptr; }
    const Path* path() const { return path_.get(); }
    /// The pixels of the upright picture: the bitmap of `imageWithCGImage`, else the smallest form, decoded
    /// at every call. Null for symbols and for pictures that cannot be decoded.
    std::shared_ptr<const CGImage> cgImage() const;
    /// The form to decode for `scale` device pixels a point: the smallest one that is large enough, else the
    /// largest one. The first call for a bitmap encodes it.
    const Representation& representation(CGFloat scale) const;
    const ImageHeader& header() const { return header_; }
    /// The key of this picture in caches; different pictures have different identifiers.
    std::uint64_t identifier() const { return identifier_; }

    UIImage(std::vector<Representation> representations, ImageHeader header);
    UIImage(Path path, CGSize size);
    explicit UIImage(std::shared_ptr<const CGImage> bitmap);

private:
    mutable std::once_flag encoded_;  // guards representations_ of a bitmap
    mutable std::vector<Representation> representations_;
    std::shared_ptr<const CGImage> bitmap_;
    ImageHeader header_;
    std::unique_ptr<Path> path_;
    CGSize size_;
    std::uint64_t identifier_;
};

/// The picture as a JPEG file. `quality`: 0 (smallest) to 1 (best). Null data for a picture without pixels.
Data UIImageJPEGRepresentation(const UIImage& image, double quality);
Data UIImagePNGRepresentation(const UIImage& image);

}  // namespace ostrel
