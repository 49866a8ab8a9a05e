#include "platform/graphics/ImageThumbnail.h"

#include "platform/graphics/JpegErrors.h"
#include "platform/graphics/UIImage.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <span>
#include <vector>

#include <png.h>

namespace ostrel {

namespace {

// The memory limit for pictures that the decoder has to keep whole (progressive JPEG, interlaced PNG), in
// bytes; the same limit as for decoding a picture to show it.
constexpr std::int64_t mostBytesKept = 128 << 20;

/// Reduces the middle square of a picture to a smaller square, row by row from the top. Each result pixel is
/// the average of the source pixels, weighted by the area that they cover.
class SquareReducer final {
public:
    SquareReducer(int width, int height, int side)
        : width_(width),
          height_(height),
          square_(std::min(width, height)),
          side_(std::clamp(side, 1, square_)),
          line_(static_cast<std::size_t>(side_) * 4),
          sum_(line_.size()),
          result_(CGImage::make(side_, side_)) {}

    bool isReady() const { return result_ != nullptr; }
    bool isDone() const { return next_ >= lastRow(); }
    /// Adds the next row: `width` pixels of four bytes, colours multiplied by alpha.
    void add(const std::uint8_t* row) {
        const int y = next_++;
        if (y < firstRow() || y >= lastRow()) return;
        reduceLine(row);
        const double scale = double(side_) / square_;
        const double top = (y - firstRow()) * scale, bottom = top + scale;
        const int first = std::min(static_cast<int>(top), side_ - 1);
        const double boundary = first + 1;
        addLine(std::min(bottom, boundary) - top);
        if (bottom >= boundary - 1e-9) {
            write(first);
            if (first + 1 < side_) addLine(bottom - boundary);
        }
    }
    /// The result; its pixels are undefined where rows are missing.
    std::shared_ptr<const CGImage> take() { return std::move(result_); }

private:
    int firstRow() const { return (height_ - square_) / 2; }
    int lastRow() const { return firstRow() + square_; }

    void reduceLine(const std::uint8_t* row) {
        const std::uint8_t* pixel = row + std::size_t{CGImage::bytesPerPixel} * ((width_ - square_) / 2);
        if (side_ == square_) {
            for (std::size_t i = 0; i < line_.size(); ++i) line_[i] = pixel[i];
            return;
        }
        std::ranges::fill(line_, 0.0f);
        const float scale = float(side_) / float(square_);
        for (int x = 0; x < square_; ++x, pixel += 4) {
            // In double precision, so that the positions do not drift along a wide row.
            const double left = double(x) * side_ / square_;
            const int at = std::min(static_cast<int>(left), side_ - 1);
            const float beyond = at + 1 < side_ ? std::max(0.0f, float(left + double(scale) - (at + 1))) : 0;
            float* const to = line_.data() + std::size_t(at) * 4;
            for (int channel = 0; channel < 4; ++channel) to[channel] += float(pixel[channel]) * (scale - beyond);
            if (beyond > 0) {
                for (int channel = 0; channel < 4; ++channel) to[4 + channel] += float(pixel[channel]) * beyond;
            }
        }
    }
    void addLine(double weight) {
        if (weight <= 0) return;
        for (std::size_t i = 0; i < sum_.size(); ++i) sum_[i] += line_[i] * float(weight);
    }
    void write(int y) {
        std::uint8_t* const row = result_->row(y);
        for (std::size_t i = 0; i < sum_.size(); ++i) {
            row[i] = static_cast<std::uint8_t>(std::clamp(sum_[i] + 0.5f, 0.0f, 255.0f));
            sum_[i] = 0;
        }
    }

    const int width_, height_, square_, side_;
    int next_ = 0;
    std::vector<float> line_, sum_;
    std::shared_ptr<CGImage> result_;
};

void premultiply(std::span<std::uint8_t> row) {
    for (std::size_t i = 0; i + 3 < row.size(); i += 4) {
        const unsigned alpha = row[i + 3];
        if (alpha == 255) continue;
        for (std::size_t channel = 0; channel < 3; ++channel)
            row[i + channel] = static_cast<std::uint8_t>((row[i + channel] * alpha + 127) / 255);
    }
}

bool startJpeg(jpeg_decompress_struct& reader, detail::JpegErrors& errors, const Data& data, int side) {
    if (setjmp(errors.escape)) return false;
    jpeg_mem_src(&reader, reinterpret_cast<const unsigned char*>(data.bytes()), data.size());
    if (jpeg_read_header(&reader, TRUE) != JPEG_HEADER_OK) return false;
    reader.out_color_space = JCS_EXT_RGBA;
    // Blocks of 8 by 8 pixels (ITU-T T.81) are decoded as 4 by 4, 2 by 2 or 1 by 1 as long as the result is
    // large enough.
    const JDIMENSION shorter = std::min(reader.image_width, reader.image_height);
    reader.scale_num = reader.scale_denom = 1;
    while (reader.scale_denom < 8 && shorter / (2 * reader.scale_denom) >= static_cast<JDIMENSION>(side))
        reader.scale_denom *= 2;
    return jpeg_start_decompress(&reader);
}

bool readJpeg(jpeg_decompress_struct& reader, detail::JpegErrors& errors, SquareReducer& reducer, std::uint8_t* row) {
    if (setjmp(errors.escape)) return false;
    while (!reducer.isDone() && reader.output_scanline < reader.output_height) {
        JSAMPROW rows = row;
        if (jpeg_read_scanlines(&reader, &rows, 1) != 1) return false;
        reducer.add(row);
    }
    return true;
}

std::shared_ptr<const CGImage> reduceJpeg(const Data& data, int side) {
    detail::JpegErrors errors;
    jpeg_decompress_struct reader{};
    reader.err = errors.prepare();
    jpeg_create_decompress(&reader);
    std::shared_ptr<const CGImage> result;
    if (startJpeg(reader, errors, data, side)) {
        SquareReducer reducer(static_cast<int>(reader.output_width), static_cast<int>(reader.output_height), side);
        std::vector<std::uint8_t> row(std::size_t{reader.output_width} * CGImage::bytesPerPixel);
        if (reducer.isReady() && readJpeg(reader, errors, reducer, row.data())) result = reducer.take();
    }
    jpeg_destroy_decompress(&reader);
    return result;
}

/// The bytes that libpng reads, and the place to which it jumps on an error.
struct PngSource {
    std::span<const std::byte> rest;

    static void read(png_structp reader, png_bytep to, std::size_t count) {
        auto& source = *static_cast<PngSource*>(png_get_io_ptr(reader));
        if (source.rest.size() < count) png_error(reader, "truncated");
        std::memcpy(to, source.rest.data(), count);
        source.rest = source.rest.subspan(count);
    }
    [[noreturn]] static void fail(png_structp reader, png_const_charp) { png_longjmp(reader, 1); }
    static void warn(png_structp, png_const_charp) {}
};

/// As with libjpeg, no object with a destructor lives between setjmp and longjmp.
bool startPng(png_structp reader, png_infop info, PngSource& source) {
    if (setjmp(png_jmpbuf(reader))) return false;
    png_set_read_fn(reader, &source, PngSource::read);
    png_read_info(reader, info);
    png_set_expand(reader);
    png_set_strip_16(reader);
    png_set_gray_to_rgb(reader);
    png_set_add_alpha(reader, 0xFF, PNG_FILLER_AFTER);
    png_read_update_info(reader, info);
    return png_get_interlace_type(reader, info) == PNG_INTERLACE_NONE;
}

bool readPng(png_structp reader, SquareReducer& reducer, std::span<std::uint8_t> row) {
    if (setjmp(png_jmpbuf(reader))) return false;
    while (!reducer.isDone()) {
        png_read_row(reader, row.data(), nullptr);
        premultiply(row);
        reducer.add(row.data());
    }
    return true;
}

std::shared_ptr<const CGImage> reduceWhole(const CGImage& image, int side) {
    SquareReducer reducer(image.width(), image.height(), side);
    if (!reducer.isReady()) return nullptr;
    for (int y = 0; y < image.height() && !reducer.isDone(); ++y) reducer.add(image.row(y));
    return reducer.take();
}

std::shared_ptr<const CGImage> reducePng(const Data& data, const ImageHeader& header, int side, bool* isInterlaced) {
    png_structp reader = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, PngSource::fail, PngSource::warn);
    png_infop info = reader ? png_create_info_struct(reader) : nullptr;
    PngSource source{data.span()};
    std::shared_ptr<const CGImage> result;
    if (info && startPng(reader, info, source)) {
        SquareReducer reducer(header.pixelWidth, header.pixelHeight, side);
        std::vector<std::uint8_t> row(static_cast<std::size_t>(header.pixelWidth) * CGImage::bytesPerPixel);
        const bool isAsExpected = png_get_rowbytes(reader, info) == row.size();
        if (isAsExpected && reducer.isReady() && readPng(reader, reducer, row)) result = reducer.take();
    } else if (info) {
        *isInterlaced = png_get_interlace_type(reader, info) == PNG_INTERLACE_ADAM7;
    }
    png_destroy_read_struct(&reader, &info, nullptr);
    return result;
}

std::shared_ptr<const CGImage> turnSquare(std::shared_ptr<const CGImage> image, const CGAffineTransform& transform) {
    const auto part = [](CGFloat value) { return value > 0.5 ? 1 : value < -0.5 ? -1 : 0; };
    const int a = part(transform.a), b = part(transform.b), c = part(transform.c), d = part(transform.d);
    const bool isTurn = a * d - b * c != 0 && std::abs(a) + std::abs(c) == 1 && std::abs(b) + std::abs(d) == 1;
    if (!image || !isTurn || (a == 1 && d == 1)) return image;
    const int side = image->width();
    auto result = CGImage::make(side, side);
    if (!result) return nullptr;
    for (int y = 0; y < side; ++y) {
        const int v = 2 * y - side + 1;
        for (int x = 0; x < side; ++x) {
            const int u = 2 * x - side + 1;
            const int toX = (a * u + c * v + side - 1) / 2, toY = (b * u + d * v + side - 1) / 2;
            std::memcpy(result->row(toY) + static_cast<std::size_t>(toX) * CGImage::bytesPerPixel,
                        image->row(y) + static_cast<std::size_t>(x) * CGImage::bytesPerPixel, CGImage::bytesPerPixel);
        }
    }
    return result;
}

/// The transform from the stored picture to the upright one (TIFF 6.0, tag 274).
CGAffineTransform transformOfOrientation(int orientation) {
    constexpr CGAffineTransform transforms[] = {{1, 0, 0, 1}, {-1, 0, 0, 1}, {-1, 0, 0, -1}, {1, 0, 0, -1},
                                                {0, 1, 1, 0}, {0, 1, -1, 0}, {0, -1, -1, 0}, {0, -1, 1, 0}};
    return transforms[std::clamp(orientation, 1, 8) - 1];
}

}  // namespace

std::shared_ptr<const CGImage> squareThumbnail(const Data& data, int side, std::string* error) {
    const auto fail = [&](const char* reason) -> std::shared_ptr<const CGImage> {
        if (error) *error = reason;
        return nullptr;
    };
    auto header = ImageHeader::read(data);
    if (!header) return fail("It is no picture in a known format.");
    const std::int64_t pixels = std::int64_t{header->pixelWidth} * header->pixelHeight;
    if (pixels > CGImage::largestPixelCount || header->coefficientBytes > mostBytesKept)
        return fail("The picture is too large.");
    // From the upright size back to the stored size.
    if (header->orientation >= 5) std::swap(header->pixelWidth, header->pixelHeight);

    std::shared_ptr<const CGImage> result;
    bool needsWhole = header->format == ImageFormat::gif || header->format == ImageFormat::webp;
    if (header->format == ImageFormat::jpeg) result = reduceJpeg(data, side);
    if (header->format == ImageFormat::png) result = reducePng(data, *header, side, &needsWhole);
    if (needsWhole) {
        if (pixels * std::int64_t{CGImage::bytesPerPixel} > mostBytesKept) return fail("The picture is too large.");
        const auto whole = CGImage::decode(data);
        result = whole ? reduceWhole(*whole, side) : nullptr;
    }
    result = turnSquare(std::move(result), transformOfOrientation(header->orientation));
    return result ? result : fail("The picture is damaged.");
}

std::shared_ptr<const CGImage> squareThumbnail(const CGImage& image, const CGAffineTransform& transform, int side) {
    return turnSquare(reduceWhole(image, side), transform);
}

}  // namespace ostrel
