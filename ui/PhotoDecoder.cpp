#include "PhotoDecoder.h"

#include <QBuffer>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QLoggingCategory>
#include <QPainter>
#include <QScopeGuard>
#include <QtEndian>

#include <png.h>

#include <algorithm>

namespace {

constexpr int longestSide = 16384;
constexpr qint64 mebibyte = qint64(1024) * 1024;
constexpr qint64 largestFile = 64 * mebibyte;
/// What a photo may take: its bytes, their base64 text while it is a picked one, and all that decoding needs.
constexpr qint64 mostMemory = 250 * mebibyte;
/// A scan of a JPEG may cost a few bytes of the file and the time for all of the picture's pixels.
constexpr qint64 mostScannedPixels = qint64(1) << 30;

/// Chosen by the bytes and not by trying: every plugin of the platform would have a go otherwise.
QByteArray formatOf(const QByteArray &bytes)
{
    if (bytes.startsWith("\xFF\xD8\xFF"))
        return "jpeg";
    if (bytes.startsWith("\x89PNG\r\n\x1A\n"))
        return "png";
    if (bytes.startsWith("RIFF") && bytes.mid(8, 4) == "WEBP")
        return "webp";
    if (bytes.startsWith("GIF87a") || bytes.startsWith("GIF89a"))
        return "gif";
    if (bytes.startsWith("BM"))
        return "bmp";
    return {};
}

bool inBounds(QSize size) { return !size.isEmpty() && std::max(size.width(), size.height()) <= longestSide; }

qint64 pixels(QSize size) { return qint64(size.width()) * size.height(); }

/// Bytes of a file with parts left out.
class Excerpt {
public:
    explicit Excerpt(const QByteArray &whole) : m_whole(whole) {}

    void leaveOut(qsizetype from, qsizetype to)
    {
        m_kept.reserve(m_whole.size());
        m_kept.append(m_whole.constData() + m_from, from - m_from);
        m_from = to;
        m_leftOut += to - from;
        ++m_parts;
    }
    /// Whether it would make no difference to read the parts too.
    bool hardlyDiffers() const { return m_parts < 500 && m_leftOut < mebibyte; }
    QByteArray upTo(qsizetype end) &&
    {
        m_kept.append(m_whole.constData() + m_from, end - m_from);
        return std::move(m_kept);
    }

private:
    QByteArray m_whole;
    QByteArray m_kept;
    qsizetype m_from = 0;
    qsizetype m_leftOut = 0;
    qsizetype m_parts = 0;
};

/// A PNG without its ancillary chunks (https://www.w3.org/TR/png/#5Chunk-layout). Compressed text in them can take
/// gigabytes to read, and none of it shows. Empty when the chunks do not add up.
QByteArray withoutAncillaryChunks(const QByteArray &png)
{
    constexpr qsizetype signature = 8;
    constexpr qsizetype overhead = 12; // length, type and checksum
    Excerpt excerpt(png);
    for (qsizetype at = signature; at + overhead <= png.size();) {
        const qsizetype length = qFromBigEndian<quint32>(png.constData() + at);
        if (length > png.size() - at - overhead)
            return {};
        const QByteArrayView type = QByteArrayView(png).sliced(at + 4, 4);
        const bool critical = type[0] >= 'A' && type[0] <= 'Z';
        if (!critical && type != "tRNS")
            excerpt.leaveOut(at, at + overhead + length);
        at += overhead + length;
        if (type == "IEND")
            return std::move(excerpt).upTo(at);
    }
    return {};
}

/// Not through Qt, whose reader lets libpng print its errors on stderr and reads on after the last row to the end of
/// the data, however much they are.
QImage readPng(const QByteArray &bytes, qint64 memory)
{
    const QByteArray source = withoutAncillaryChunks(bytes);
    png_image header{};
    header.version = PNG_IMAGE_VERSION;
    const auto done = qScopeGuard([&header] { png_image_free(&header); });
    if (source.isEmpty() || !png_image_begin_read_from_memory(&header, source.constData(), source.size()))
        return {};
    const QSize size(static_cast<int>(header.width), static_cast<int>(header.height));
    header.format = Q_BYTE_ORDER == Q_LITTLE_ENDIAN ? PNG_FORMAT_BGRA : PNG_FORMAT_ARGB;
    header.flags |= PNG_IMAGE_FLAG_16BIT_sRGB;
    if (!inBounds(size) || 4 * pixels(size) > memory - source.size())
        return {};
    QImage image(size, QImage::Format_ARGB32);
    const auto stride = static_cast<png_int_32>(image.bytesPerLine());
    if (image.isNull() || !png_image_finish_read(&header, nullptr, image.bits(), stride, nullptr))
        return {};
    return image;
}

/// What of a JPEG is decoded, and what that takes besides the picture.
struct JpegOutline {
    QByteArray bytes;
    /// In bytes: where one scan does not make the whole picture, all its coefficients are kept (ITU-T T.81, 4.8.1).
    qint64 coefficients = 0;
    int scans = 0;
};

/// How many samples a JPEG's frame has, from its header's contents (B.2.2).
qint64 samplesOf(QByteArrayView frame)
{
    constexpr qsizetype head = 6;
    const qint64 height = qFromBigEndian<quint16>(frame.constData() + 1);
    const qint64 width = qFromBigEndian<quint16>(frame.constData() + 3);
    int each = 0;
    int most = 1;
    for (qsizetype at = head; at + 3 <= frame.size(); at += 3) {
        const auto sampling = static_cast<uchar>(frame[at + 1]);
        each += (sampling >> 4) * (sampling & 15);
        most = std::max(most, (sampling >> 4) * (sampling & 15));
    }
    return (width + 64) * (height + 64) * each / most;
}

/// Leaves out comments, profiles and notes other than the first that may tell the orientation: the time to read them
/// grows with the square of their number.
JpegOutline outlineOf(const QByteArray &jpeg)
{
    Excerpt excerpt(jpeg);
    JpegOutline outline;
    qint64 samples = 0;
    bool inParts = false;
    int components = 0;
    bool oriented = false;
    for (qsizetype at = 2; (at = jpeg.indexOf('\xFF', at)) >= 0 && at + 4 <= jpeg.size();) {
        const auto marker = static_cast<uchar>(jpeg[at + 1]);
        // Fill bytes, and what stands in the coded data.
        if (marker < 0xC0 || marker == 0xFF || (marker >= 0xD0 && marker <= 0xD8)) {
            at += marker == 0xFF ? 1 : 2;
            continue;
        }
        const qsizetype end = at + 2 + qFromBigEndian<quint16>(jpeg.constData() + at + 2);
        if (marker == 0xD9 || end < at + 4 || end > jpeg.size())
            break;
        const QByteArrayView contents = QByteArrayView(jpeg).sliced(at + 4, end - at - 4);
        const bool exif = marker == 0xE1 && contents.startsWith("Exif");
        if (marker == 0xFE || marker == 0xE2 || (marker == 0xE1 && (oriented || !exif)))
            excerpt.leaveOut(at, end);
        oriented = oriented || exif;
        if (marker < 0xD0 && marker != 0xC4 && marker != 0xC8 && marker != 0xCC && contents.size() >= 6) {
            samples += samplesOf(contents);
            components = contents[5];
            inParts = inParts || marker % 4 == 2; // progressive
        }
        if (marker == 0xDA && !contents.isEmpty()) {
            ++outline.scans;
            inParts = inParts || outline.scans > 1 || contents[0] != components;
        }
        at = end;
    }
    outline.coefficients = inParts ? 2 * samples : 0;
    outline.bytes = excerpt.hardlyDiffers() ? jpeg : std::move(excerpt).upTo(jpeg.size());
    return outline;
}

/// How many bytes a pixel of a WebP takes while it is decoded.
int webpBytesPerPixel(QByteArrayView webp)
{
    constexpr qsizetype overhead = 8; // type and length
    int most = 4;
    for (qsizetype at = 12; at + overhead <= webp.size();) {
        const QByteArrayView type = webp.sliced(at, 4);
        if (type == "VP8L" || type == "ALPH")
            most = std::max(most, 10);
        if (type == "ANMF")
            return 16;
        const qint64 length = qFromLittleEndian<quint32>(webp.constData() + at + 4);
        at += overhead + length + length % 2;
    }
    return most;
}

/// A picture that moves is shown on its canvas, which may be larger than its first frame.
QSize canvasOf(const QByteArray &gif)
{
    if (gif.size() < 10)
        return {};
    return {qFromLittleEndian<quint16>(gif.constData() + 6), qFromLittleEndian<quint16>(gif.constData() + 8)};
}

/// What decoding a picture takes at most, in bytes.
qint64 memoryFor(const QImageReader &reader, const QByteArray &bytes, QSize size)
{
    if (reader.format() == "webp")
        return webpBytesPerPixel(bytes) * pixels(size) + 2 * bytes.size();
    if (reader.format() == "gif")
        return 12 * pixels(size.expandedTo(canvasOf(bytes)));
    const int depth = QImage::toPixelFormat(reader.imageFormat()).bitsPerPixel();
    return pixels(size) * (depth == 32 ? 4 : 4 + depth / 8 + 1);
}

/// Scaled already where that saves time and memory.
QImage readJpeg(const QByteArray &bytes, int diameter, qint64 memory)
{
    JpegOutline outline = outlineOf(bytes);
    if (!outline.bytes.isSharedWith(bytes))
        memory -= outline.bytes.size();
    QBuffer buffer(&outline.bytes);
    QImageReader reader(&buffer, "jpeg");
    reader.setAutoTransform(true);
    const QSize size = reader.size();
    if (!inBounds(size) || outline.scans * pixels(size) > mostScannedPixels)
        return {};
    QSize scaled = size.scaled(diameter, diameter, Qt::KeepAspectRatioByExpanding).expandedTo({1, 1});
    if (scaled.width() < size.width())
        reader.setScaledSize(scaled);
    else
        scaled = size;
    // It is scaled in two steps, the first of which leaves up to twice each side.
    if (outline.coefficients + 8 * std::min(pixels(size), 4 * pixels(scaled)) > memory)
        return {};
    return reader.read();
}

QImage readOther(QByteArray bytes, const QByteArray &format, qint64 memory)
{
    QBuffer buffer(&bytes);
    QImageReader reader(&buffer, format);
    reader.setAutoDetectImageFormat(false);
    reader.setAutoTransform(true);
    const QSize size = reader.size();
    return inBounds(size) && memoryFor(reader, bytes, size) <= memory ? reader.read() : QImage();
}

QImage read(const QByteArray &bytes, int diameter)
{
    // In base64 a byte takes 8/3, since texts have two bytes a character.
    const qint64 memory = mostMemory - bytes.size() - bytes.size() * 8 / 3;
    const QByteArray format = formatOf(bytes);
    if (format.isEmpty() || memory <= 0)
        return {};
    if (format == "png")
        return readPng(bytes, memory);
    return format == "jpeg" ? readJpeg(bytes, diameter, memory) : readOther(bytes, format, memory);
}

/// Qt tells of each damaged picture; the app logs nothing.
void silenceQt()
{
    [[maybe_unused]] static const bool once = [] {
        QLoggingCategory::setFilterRules(QStringLiteral("qt.gui.imageio*=false\nqt.gui.icc*=false"));
        return true;
    }();
}

} // namespace

QImage decodePhoto(const QByteArray &bytes, int diameter, PhotoShape shape)
{
    if (diameter <= 0)
        return {};
    silenceQt();
    // Before it is scaled or painted: a picture of two colours would become a black and white pattern.
    const QImage photo = read(bytes, diameter).convertToFormat(QImage::Format_ARGB32_Premultiplied);
    if (photo.isNull())
        return {};
    // Cropped before it is scaled: a strip would become enormous.
    const int side = std::min(photo.width(), photo.height());
    const qsizetype left = (photo.width() - side) / 2;
    const uchar *const corner = photo.constScanLine((photo.height() - side) / 2) + 4 * left;
    const QImage middle = QImage(corner, side, side, photo.bytesPerLine(), photo.format())
                              .scaled(diameter, diameter, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);

    QImage circle(diameter, diameter, QImage::Format_ARGB32_Premultiplied);
    circle.fill(Qt::transparent);
    QPainter painter(&circle);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(middle);
    if (shape == PhotoShape::Circle)
        painter.drawEllipse(circle.rect());
    else
        painter.drawRect(circle.rect());
    return circle;
}

QImage decodePhotoFile(const QString &path, int diameter, PhotoShape shape)
{
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QFile::ReadOnly) || file.size() > largestFile)
        return {};
    return decodePhoto(file.read(largestFile), diameter, shape);
}
