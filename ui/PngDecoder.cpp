#include "PngDecoder.h"

#include <QScopeGuard>

#include <png.h>

#include <algorithm>
#include <csetjmp>
#include <ctime>

namespace {

constexpr int longestSide = 16384;
/// Processor time, so that a busy machine does not refuse good pictures.
constexpr std::clock_t longestTime = std::clock_t(10) * CLOCKS_PER_SEC;

struct PngSource {
    QByteArrayView rest;
    std::clock_t end;
};

/// Replaces libpng's handler, which prints the message.
[[noreturn]] void failRead(png_structp png, png_const_charp) { png_longjmp(png, 1); }

void ignoreWarning(png_structp, png_const_charp) {}

void readSource(png_structp png, png_bytep to, size_t count)
{
    auto &source = *static_cast<PngSource *>(png_get_io_ptr(png));
    const auto size = static_cast<qsizetype>(count);
    if (source.rest.size() < size || std::clock() > source.end)
        failRead(png, "");
    std::copy_n(source.rest.begin(), size, to);
    source.rest = source.rest.sliced(size);
}

bool readPicture(png_structp png, png_infop info, QImage &image, qint64 memory)
{
    // Skip texts, profiles and the like: they do not show, and may need gigabytes.
    png_set_keep_unknown_chunks(png, PNG_HANDLE_CHUNK_NEVER, nullptr, -1);
    png_read_info(png, info);
    const QSize size(static_cast<int>(png_get_image_width(png, info)),
                     static_cast<int>(png_get_image_height(png, info)));
    if (!isPhotoSize(size) || 4 * qint64(size.width()) * size.height() > memory)
        return false;
    png_set_expand(png);
    png_set_scale_16(png);
    png_set_gray_to_rgb(png);
    // QImage stores pixels in the processor's byte order: blue first on little endian, alpha first on big endian.
    if (Q_BYTE_ORDER == Q_LITTLE_ENDIAN) {
        png_set_bgr(png);
        png_set_filler(png, 0xFF, PNG_FILLER_AFTER);
    } else {
        png_set_swap_alpha(png);
        png_set_filler(png, 0xFF, PNG_FILLER_BEFORE);
    }
    image = QImage(size, QImage::Format_ARGB32);
    if (image.isNull())
        return false;
    for (int passes = png_set_interlace_handling(png); passes > 0; --passes) {
        for (int y = 0; y < size.height(); ++y)
            png_read_row(png, image.scanLine(y), nullptr);
    }
    return true;
}

/// libpng reports errors with longjmp, which runs no destructors. The caller must own everything that needs one.
bool readOrFail(png_structp png, png_infop info, QImage &image, qint64 memory)
{
    if (setjmp(png_jmpbuf(png))) // NOLINT(cert-err52-cpp): libpng's error handling
        return false;
    return readPicture(png, info, image, memory);
}

} // namespace

bool isPhotoSize(QSize size) { return !size.isEmpty() && std::max(size.width(), size.height()) <= longestSide; }

QImage decodePng(const QByteArray &bytes, qint64 memory)
{
    PngSource source{bytes, std::clock() + longestTime};
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, failRead, ignoreWarning);
    png_infop info = png ? png_create_info_struct(png) : nullptr;
    const auto done = qScopeGuard([&] { png_destroy_read_struct(&png, &info, nullptr); });
    if (!info)
        return {};
    png_set_read_fn(png, &source, readSource);
    QImage image;
    return readOrFail(png, info, image, memory) ? image : QImage();
}
