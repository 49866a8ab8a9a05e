#include "articleserver/media/ServerPicture.h"

#include "articleserver/common/ServerLimits.h"
#include "articleserver/media/ExifOrientation.h"

#include <algorithm>
#include <array>
#include <csetjmp>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

// jpeglib.h needs the declarations of <cstdio>.
#include <jpeglib.h>
// jerror.h has the codes of libjpeg's messages.
#include <jerror.h>

namespace articleserver {

namespace {

struct DestroyContext {
    void operator()(cairo_t* context) const { cairo_destroy(context); }
};
using Context = std::unique_ptr<cairo_t, DestroyContext>;

/// The error handler of one picture. libjpeg reports an error by a call that must not return, so it jumps to
/// `escape`.
struct JpegErrors {
    jpeg_error_mgr manager{};
    std::jmp_buf escape{};
    bool isCutShort = false;
};

[[noreturn]] void leaveJpeg(j_common_ptr info) { std::longjmp(reinterpret_cast<JpegErrors*>(info->err)->escape, 1); }

/// Notes missing data: libjpeg fills the rest of such a picture with grey and only gives a warning.
void noteJpegMessage(j_common_ptr info, int level) {
    const int code = info->err->msg_code;
    if (level < 0 && (code == JWRN_JPEG_EOF || code == JWRN_HIT_MARKER)) {
        reinterpret_cast<JpegErrors*>(info->err)->isCutShort = true;
    }
}

// A small file can hold thousands of scans, and each of them costs as much time as a whole picture.
constexpr int maximumScans = 100;

constexpr int exifMarker = JPEG_APP0 + 1;

void limitScans(j_common_ptr info) {
    if (reinterpret_cast<j_decompress_ptr>(info)->input_scan_number > maximumScans) leaveJpeg(info);
}

jpeg_error_mgr* prepare(JpegErrors& errors) {
    jpeg_error_mgr* manager = jpeg_std_error(&errors.manager);
    manager->error_exit = leaveJpeg;
    manager->emit_message = noteJpegMessage;
    return manager;
}

struct ByteSource {
    std::string_view bytes;
};

cairo_status_t readBytes(void* closure, unsigned char* data, unsigned int length) {
    auto& source = *static_cast<ByteSource*>(closure);
    if (source.bytes.size() < length) return CAIRO_STATUS_READ_ERROR;
    std::memcpy(data, source.bytes.data(), length);
    source.bytes.remove_prefix(length);
    return CAIRO_STATUS_SUCCESS;
}

cairo_status_t appendBytes(void* closure, const unsigned char* data, unsigned int length) {
    static_cast<std::string*>(closure)->append(reinterpret_cast<const char*>(data), length);
    return CAIRO_STATUS_SUCCESS;
}

ServerFailure tooLarge(int maximumSide) {
    return {ServerFault::tooLarge, "The picture is larger than " + std::to_string(maximumSide) + " pixels a side."};
}

ServerFailure brokenPicture() { return {ServerFault::badInput, "The picture is broken."}; }

std::uint32_t bigEndian(std::string_view bytes) {
    std::uint32_t value = 0;
    for (std::size_t index = 0; index < 4; ++index) {
        value = value << 8 | static_cast<unsigned char>(bytes[index]);
    }
    return value;
}

constexpr std::string_view pngSignature("\x89PNG\r\n\x1A\n", 8);
constexpr std::string_view jpegSignature("\xFF\xD8\xFF", 3);

}  // namespace

ServerPicture::ServerPicture(int width, int height)
    : surface_(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height)) {}

ServerResult<ServerPicture> ServerPicture::decode(std::string_view bytes, int maximumSide) {
    if (bytes.starts_with(pngSignature)) return decodePng(bytes, maximumSide);
    if (bytes.starts_with(jpegSignature)) {
        auto decoded =
            decodeJpeg(bytes, {maximumSide, std::int64_t{maximumSide} * maximumSide, ServerLimits::pictureMemory, 0});
        if (!decoded) return decoded.failure();
        return std::move(decoded->picture);
    }
    return ServerFailure{ServerFault::unsupported, "The picture is neither JPEG nor PNG."};
}

ServerResult<ServerPicture::Thumbnail> ServerPicture::thumbnail(std::string_view jpeg, int side) {
    if (!jpeg.starts_with(jpegSignature)) {
        return ServerFailure{ServerFault::unsupported, "The picture is not a JPEG file."};
    }
    // The decoder makes at least twice the size, so that a pixel of the thumbnail averages several pixels.
    auto decoded = decodeJpeg(
        jpeg, {ServerLimits::pictureSide, ServerLimits::picturePixels, ServerLimits::pictureMemory, 2 * side});
    if (!decoded) return decoded.failure();
    return Thumbnail{decoded->picture.fitted(side), decoded->width, decoded->height};
}

ServerResult<ServerPicture> ServerPicture::decodePng(std::string_view bytes, int maximumSide) {
    // The first chunk has width and height at fixed places (PNG, 11.2.2).
    if (bytes.size() < 24 || bytes.substr(12, 4) != "IHDR") return brokenPicture();
    auto side = static_cast<std::uint32_t>(maximumSide);
    if (bigEndian(bytes.substr(16)) > side || bigEndian(bytes.substr(20)) > side) return tooLarge(maximumSide);
    ByteSource source{bytes};
    ServerPicture picture(cairo_image_surface_create_from_png_stream(readBytes, &source));
    if (cairo_surface_status(picture.surface()) != CAIRO_STATUS_SUCCESS) return brokenPicture();
    return picture;
}

ServerResult<ServerPicture::Thumbnail> ServerPicture::decodeJpeg(std::string_view bytes, const JpegWish& wish) {
    JpegErrors errors;
    jpeg_decompress_struct info{};
    jpeg_progress_mgr progress{};
    info.err = prepare(errors);
    // Volatile variables keep the values that are assigned between setjmp and longjmp (C17, 7.13.2.1).
    cairo_surface_t* volatile surface = nullptr;
    volatile int orientation = 1;
    if (setjmp(errors.escape) != 0) {
        jpeg_destroy_decompress(&info);
        if (surface) cairo_surface_destroy(surface);
        return brokenPicture();
    }
    jpeg_create_decompress(&info);
    progress.progress_monitor = limitScans;
    info.progress = &progress;
    jpeg_mem_src(&info, reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
    jpeg_save_markers(&info, exifMarker, 0xFFFF);
    jpeg_read_header(&info, TRUE);
    auto side = static_cast<JDIMENSION>(wish.maximumSide);
    const std::int64_t pixelCount = std::int64_t{info.image_width} * info.image_height;
    // For a picture with several scans, the decoder keeps all coefficients in memory, two bytes for a sample.
    const std::int64_t coefficients = jpeg_has_multiple_scans(&info) ? pixelCount * info.num_components * 2 : 0;
    if (info.image_width > side || info.image_height > side || pixelCount > wish.maximumPixels ||
        coefficients > wish.maximumMemory) {
        jpeg_destroy_decompress(&info);
        if (info.image_width > side || info.image_height > side) return tooLarge(wish.maximumSide);
        return ServerFailure{ServerFault::tooLarge, "The picture has too many pixels."};
    }
    for (auto* marker = info.marker_list; marker && orientation == 1; marker = marker->next) {
        if (marker->marker != exifMarker) continue;
        orientation = exifOrientationOf({reinterpret_cast<const char*>(marker->data), marker->data_length});
    }
    // cairo's pixels are words in the byte order of the machine. On little-endian machines they have these
    // bytes.
    info.out_color_space = JCS_EXT_BGRA;
    if (info.jpeg_color_space == JCS_CMYK || info.jpeg_color_space == JCS_YCCK) {
        jpeg_destroy_decompress(&info);
        return ServerFailure{ServerFault::unsupported, "The picture's colours are not RGB."};
    }
    const JDIMENSION longer = std::max(info.image_width, info.image_height);
    while (wish.side > 0 && info.scale_denom < 8 &&
           longer / (info.scale_denom * 2) >= static_cast<JDIMENSION>(wish.side)) {
        info.scale_denom *= 2;
    }
    jpeg_start_decompress(&info);
    surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, static_cast<int>(info.output_width),
                                         static_cast<int>(info.output_height));
    if (cairo_surface_status(surface) != CAIRO_STATUS_SUCCESS) std::longjmp(errors.escape, 1);
    unsigned char* pixels = cairo_image_surface_get_data(surface);
    int stride = cairo_image_surface_get_stride(surface);
    while (info.output_scanline < info.output_height) {
        JSAMPROW row = pixels + static_cast<std::ptrdiff_t>(info.output_scanline) * stride;
        jpeg_read_scanlines(&info, &row, 1);
    }
    jpeg_finish_decompress(&info);
    int width = static_cast<int>(info.image_width);
    int height = static_cast<int>(info.image_height);
    jpeg_destroy_decompress(&info);
    cairo_surface_mark_dirty(surface);
    ServerPicture stored(static_cast<cairo_surface_t*>(surface));
    if (errors.isCutShort) return brokenPicture();
    if (orientation == 1) return Thumbnail{std::move(stored), width, height};
    if (isSidewaysOrientation(orientation)) std::swap(width, height);
    return Thumbnail{stored.oriented(orientation), width, height};
}

int ServerPicture::width() const { return cairo_image_surface_get_width(surface()); }

int ServerPicture::height() const { return cairo_image_surface_get_height(surface()); }

ServerPicture ServerPicture::fitted(int side) const {
    double scale = std::min(1.0, static_cast<double>(side) / std::max(width(), height()));
    ServerPicture made(std::max(1, static_cast<int>(width() * scale + 0.5)),
                       std::max(1, static_cast<int>(height() * scale + 0.5)));
    Context context(cairo_create(made.surface()));
    cairo_scale(context.get(), static_cast<double>(made.width()) / width(),
                static_cast<double>(made.height()) / height());
    cairo_set_source_surface(context.get(), surface(), 0, 0);
    cairo_pattern_set_filter(cairo_get_source(context.get()), CAIRO_FILTER_GOOD);
    // Without this extension, the pixels at the border would blend with the transparency outside.
    cairo_pattern_set_extend(cairo_get_source(context.get()), CAIRO_EXTEND_PAD);
    cairo_paint(context.get());
    return made;
}

ServerPicture ServerPicture::squared(int side) const {
    ServerPicture made(side, side);
    double scale = static_cast<double>(side) / std::min(width(), height());
    Context context(cairo_create(made.surface()));
    cairo_translate(context.get(), side / 2.0, side / 2.0);
    cairo_scale(context.get(), scale, scale);
    cairo_set_source_surface(context.get(), surface(), -width() / 2.0, -height() / 2.0);
    cairo_pattern_set_filter(cairo_get_source(context.get()), CAIRO_FILTER_GOOD);
    cairo_pattern_set_extend(cairo_get_source(context.get()), CAIRO_EXTEND_PAD);
    cairo_paint(context.get());
    return made;
}

ServerPicture ServerPicture::oriented(int orientation) const {
    double w = width();
    double h = height();
    // The stored pixel (x, y) is shown at (xx x + xy y + x0, yx x + yy y + y0).
    cairo_matrix_t matrix;
    switch (orientation) {
    case 2: cairo_matrix_init(&matrix, -1, 0, 0, 1, w, 0); break;
    case 3: cairo_matrix_init(&matrix, -1, 0, 0, -1, w, h); break;
    case 4: cairo_matrix_init(&matrix, 1, 0, 0, -1, 0, h); break;
    case 5: cairo_matrix_init(&matrix, 0, 1, 1, 0, 0, 0); break;
    case 6: cairo_matrix_init(&matrix, 0, 1, -1, 0, h, 0); break;
    case 7: cairo_matrix_init(&matrix, 0, -1, -1, 0, h, w); break;
    case 8: cairo_matrix_init(&matrix, 0, -1, 1, 0, 0, w); break;
    default: cairo_matrix_init_identity(&matrix); break;
    }
    bool isSideways = isSidewaysOrientation(orientation);
    ServerPicture made(isSideways ? height() : width(), isSideways ? width() : height());
    Context context(cairo_create(made.surface()));
    cairo_set_matrix(context.get(), &matrix);
    cairo_set_source_surface(context.get(), surface(), 0, 0);
    cairo_pattern_set_filter(cairo_get_source(context.get()), CAIRO_FILTER_NEAREST);
    cairo_set_operator(context.get(), CAIRO_OPERATOR_SOURCE);
    cairo_paint(context.get());
    return made;
}

std::string ServerPicture::jpeg(int quality) const {
    ServerPicture flat(width(), height());
    {
        Context context(cairo_create(flat.surface()));
        cairo_set_source_rgb(context.get(), 1, 1, 1);
        cairo_paint(context.get());
        cairo_set_source_surface(context.get(), surface(), 0, 0);
        cairo_paint(context.get());
    }
    cairo_surface_flush(flat.surface());

    JpegErrors errors;
    jpeg_compress_struct info{};
    info.err = prepare(errors);
    unsigned char* bytes = nullptr;
    unsigned long size = 0;
    if (setjmp(errors.escape) != 0) {
        jpeg_destroy_compress(&info);
        std::free(bytes);
        return {};
    }
    jpeg_create_compress(&info);
    jpeg_mem_dest(&info, &bytes, &size);
    info.image_width = static_cast<JDIMENSION>(flat.width());
    info.image_height = static_cast<JDIMENSION>(flat.height());
    info.input_components = 4;
    info.in_color_space = JCS_EXT_BGRX;
    jpeg_set_defaults(&info);
    jpeg_set_quality(&info, quality, TRUE);
    jpeg_start_compress(&info, TRUE);
    unsigned char* pixels = cairo_image_surface_get_data(flat.surface());
    int stride = cairo_image_surface_get_stride(flat.surface());
    while (info.next_scanline < info.image_height) {
        JSAMPROW row = pixels + static_cast<std::ptrdiff_t>(info.next_scanline) * stride;
        jpeg_write_scanlines(&info, &row, 1);
    }
    jpeg_finish_compress(&info);
    jpeg_destroy_compress(&info);
    std::string made(reinterpret_cast<char*>(bytes), size);
    std::free(bytes);
    return made;
}

std::string ServerPicture::png() const {
    std::string bytes;
    cairo_surface_write_to_png_stream(surface(), appendBytes, &bytes);
    return bytes;
}

}  // namespace articleserver
