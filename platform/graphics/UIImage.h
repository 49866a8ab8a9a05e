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

/// What the first bytes of a picture file tell. Nothing is decoded.
struct ImageHeader {
    ImageFormat format = ImageFormat::png;
    int pixelWidth = 0, pixelHeight = 0;  ///< upright, after the EXIF orientation
    int orientation = 1;                  ///< EXIF/TIFF orientation, 1 to 8
    /// Bytes that a decoder has to keep of the whole picture at whatever size it is wanted: the coefficients of a JPEG
    /// whose scans do not each hold all components (progressive ones above all). 0: none.
    std::int64_t coefficientBytes = 0;

    /// None when the bytes are no PNG, JPEG, GIF or WebP picture, or its size is not 1 to 65,500 pixels a side.
    static std::optional<ImageHeader> read(const Data& data);
};

/// An immutable picture: encoded bytes, decoded by the backend off the main thread at the size they are shown, or a
/// vector symbol. Cheap to copy by pointer; any thread.
class UIImage final {
public:
    /// One encoded form of the picture and the device scale it is meant for.
    struct Representation {
        Data data;
        CGFloat scale = 1;
    };

    /// Null when the bytes are no picture.
    static std::shared_ptr<const UIImage> imageWithData(const Data& data, CGFloat scale = 1);
    /// One pixel is one point. Null when there is no bitmap.
    static std::shared_ptr<const UIImage> imageWithCGImage(std::shared_ptr<const CGImage> bitmap);
    /// Loads "<name>.png" and its neighbours "<name>@2x.png" and "<name>@3x.png"; null when the file is no picture.
    /// The same path gives the same image while one is alive.
    static std::shared_ptr<const UIImage> imageWithContentsOfFile(const std::string& path);
    /// A symbol of the platform, 24 points square: "chevron.right", "chevron.left", "chevron.down", "checkmark", "info.circle", "plus", "square.and.arrow.up",
    /// "xmark", "trash", "pencil", "link", "safari", "envelope", "person.crop.circle", "arrow.clockwise", "ellipsis",
    /// "exclamationmark.circle", "doc.on.doc". Null for unknown names. Drawn in the tint colour of the view.
    static std::shared_ptr<const UIImage> systemImageNamed(std::string_view name);

    /// Points.
    CGSize size() const { return size_; }
    bool isSymbol() const { return path_ != nullptr; }
    const Path* path() const { return path_.get(); }
    /// The picture's pixels, upright: the bitmap it was made of, else its smallest form decoded anew at every call. Null
    /// for symbols and for what is no JPEG or PNG.
    std::shared_ptr<const CGImage> cgImage() const;
    /// The form to decode for `scale` device pixels a point: the smallest that is large enough, else the largest. A bitmap
    /// is encoded when this is first asked for.
    const Representation& representation(CGFloat scale) const;
    const ImageHeader& header() const { return header_; }
    /// Distinguishes pictures in caches; equal for equal pictures only.
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

/// The picture as a JPEG file. `quality`: 0 (smallest) to 1 (best). Null data when it has no pixels.
Data UIImageJPEGRepresentation(const UIImage& image, double quality);
Data UIImagePNGRepresentation(const UIImage& image);

}  // namespace ostrel
