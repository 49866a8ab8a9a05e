#include "platform/graphics/CGImage.h"
#include "platform/graphics/ImageDecoder.h"
#include "platform/graphics/JpegErrors.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <string>

#include <png.h>

namespace ostrel {

namespace {

using detail::JpegErrors;

/// In this function and the next, no object with a destructor lives between setjmp and longjmp.
bool startReading(jpeg_decompress_struct& reader, JpegErrors& errors, const Data& data) {
    if (setjmp(errors.escape)) return false;
    jpeg_mem_src(&reader, reinterpret_cast<const unsigned char*>(data.bytes()), data.size());
    if (jpeg_read_header(&reader, TRUE) != JPEG_HEADER_OK) return false;
    reader.out_color_space = JCS_EXT_RGBA;
    return jpeg_start_decompress(&reader);
}

bool readRows(jpeg_decompress_struct& reader, JpegErrors& errors, CGImage& image) {
    if (setjmp(errors.escape)) return false;
    while (reader.output_scanline < reader.output_height) {
        JSAMPROW row = image.row(static_cast<int>(reader.output_scanline));
        if (jpeg_read_scanlines(&reader, &row, 1) != 1) return false;
    }
    return true;
}

std::shared_ptr<const CGImage> decodeJpeg(const Data& data) {
    JpegErrors errors;
    jpeg_decompress_struct reader{};
    reader.err = errors.prepare();
    jpeg_create_decompress(&reader);
    std::shared_ptr<CGImage> image;
    if (startReading(reader, errors, data)) {
        image = CGImage::make(static_cast<int>(reader.output_width), static_cast<int>(reader.output_height));
        if (image && !readRows(reader, errors, *image)) image = nullptr;
    }
    jpeg_destroy_decompress(&reader);
    return image;
}

std::shared_ptr<const CGImage> decodePng(const Data& data) {
    png_image reader{};
    reader.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_memory(&reader, data.bytes(), data.size())) return nullptr;
    std::shared_ptr<CGImage> image;
    if (reader.width <= 65500 && reader.height <= 65500)
        image = CGImage::make(static_cast<int>(reader.width), static_cast<int>(reader.height));
    reader.format = PNG_FORMAT_RGBA;
    const bool isRead = image && png_image_finish_read(&reader, nullptr, image->row(0), 0, nullptr);
    png_image_free(&reader);
    if (!isRead) return nullptr;
    for (int y = 0; y < image->height(); ++y) {
        std::uint8_t* pixel = image->row(y);
        for (int x = 0; x < image->width(); ++x, pixel += CGImage::bytesPerPixel) {
            for (int channel = 0; channel < 3; ++channel)
                pixel[channel] = static_cast<std::uint8_t>((pixel[channel] * pixel[3] + 127) / 255);
        }
    }
    return image;
}

bool writeRows(jpeg_compress_struct& writer, JpegErrors& errors, const CGImage& image, int quality,
               unsigned char** bytes, unsigned long* size) {
    if (setjmp(errors.escape)) return false;
    jpeg_mem_dest(&writer, bytes, size);
    writer.image_width = static_cast<JDIMENSION>(image.width());
    writer.image_height = static_cast<JDIMENSION>(image.height());
    writer.input_components = CGImage::bytesPerPixel;
    writer.in_color_space = JCS_EXT_RGBX;
    jpeg_set_defaults(&writer);
    jpeg_set_quality(&writer, quality, TRUE);
    jpeg_start_compress(&writer, TRUE);
    while (writer.next_scanline < writer.image_height) {
        JSAMPROW row = const_cast<JSAMPROW>(image.row(static_cast<int>(writer.next_scanline)));
        jpeg_write_scanlines(&writer, &row, 1);
    }
    jpeg_finish_compress(&writer);
    return true;
}

}  // namespace

std::shared_ptr<const CGImage> CGImage::decode(const Data& data) {
    const std::string_view bytes = data.view();
    if (bytes.starts_with("\xFF\xD8")) return decodeJpeg(data);
    if (bytes.starts_with("\x89PNG")) return decodePng(data);
    const ImageDecoder decoder = installedImageDecoder();
    return decoder ? decoder(data) : nullptr;
}

Data CGImage::jpeg(double quality) const {
    JpegErrors errors;
    jpeg_compress_struct writer{};
    writer.err = errors.prepare();
    jpeg_create_compress(&writer);
    unsigned char* bytes = nullptr;
    unsigned long size = 0;
    const int percent = static_cast<int>(std::lround(std::clamp(quality, 0.0, 1.0) * 100));
    const bool isWritten = writeRows(writer, errors, *this, percent, &bytes, &size);
    jpeg_destroy_compress(&writer);
    const Data data = isWritten ? Data::copy(std::string_view(reinterpret_cast<const char*>(bytes), size)) : Data();
    std::free(bytes);
    return data;
}

Data CGImage::png() const {
    std::string straight(bytesPerRow() * static_cast<std::size_t>(height_), '\0');
    std::size_t at = 0;
    for (int y = 0; y < height_; ++y) {
        const std::uint8_t* pixel = row(y);
        for (int x = 0; x < width_; ++x, pixel += bytesPerPixel, at += bytesPerPixel) {
            const unsigned alpha = pixel[3];
            for (std::size_t channel = 0; channel < 3; ++channel) {
                const unsigned value = alpha ? std::min(255u, (pixel[channel] * 255u + alpha / 2) / alpha) : 0;
                straight[at + channel] = static_cast<char>(value);
            }
            straight[at + 3] = static_cast<char>(alpha);
        }
    }
    png_image writer{};
    writer.version = PNG_IMAGE_VERSION;
    writer.width = static_cast<png_uint_32>(width_);
    writer.height = static_cast<png_uint_32>(height_);
    writer.format = PNG_FORMAT_RGBA;
    writer.flags = PNG_IMAGE_FLAG_FAST;
    png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(writer);
    std::string bytes(size, '\0');
    const bool isWritten = png_image_write_to_memory(&writer, bytes.data(), &size, 0, straight.data(), 0, nullptr);
    png_image_free(&writer);
    if (!isWritten) return {};
    bytes.resize(size);
    return Data::take(std::move(bytes));
}

}  // namespace ostrel
