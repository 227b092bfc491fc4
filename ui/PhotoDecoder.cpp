#include "PhotoDecoder.h"

#include "PhotoCost.h"
#include "PngDecoder.h"

#include <QBuffer>
#include <QImageReader>
#include <QLoggingCategory>
#include <QPainter>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

/// The memory for the photo's bytes, their base64 text and the decoding. A little less than the documented 256 MiB,
/// since the costs are estimates.
constexpr qint64 maxMemory = qint64(250) * 1024 * 1024;
/// A scan of a JPEG may take a few bytes in the file, but as much time as all of the picture's pixels.
constexpr qint64 maxScannedPixels = qint64(1) << 30;

qint64 pixels(QSize size) { return qint64(size.width()) * size.height(); }

/// Reads one format and tries no other.
class FormatReader : public QImageReader {
public:
    FormatReader(const QByteArray &bytes, const char *format)
    {
        m_buffer.setData(bytes);
        setDevice(&m_buffer);
        setFormat(format);
        setAutoDetectImageFormat(false);
        setAutoTransform(true);
    }

private:
    QBuffer m_buffer;
};

/// Scales large pictures while decoding, which saves time and memory.
QImage readJpeg(const QByteArray &bytes, int diameter, qint64 memory)
{
    const JpegOutline outline = jpegOutlineOf(bytes, memory);
    if (!outline.bytes.isSharedWith(bytes))
        memory -= outline.bytes.size();
    FormatReader reader(outline.bytes, "jpeg");
    const QSize size = reader.size();
    if (!isPhotoSize(size) || outline.scans * pixels(size) > maxScannedPixels)
        return {};
    const QSize scaled = size.scaled(diameter, diameter, Qt::KeepAspectRatioByExpanding).boundedTo(size);
    reader.setScaledSize(scaled);
    // Qt scales in two steps; the first one yields up to twice the wanted width and height.
    if (outline.coefficientBytes + 8 * std::min(pixels(size), 4 * pixels(scaled)) > memory)
        return {};
    return reader.read();
}

QImage readWebp(const QByteArray &bytes, int, qint64 memory)
{
    const WebpCost cost = webpCostOf(bytes);
    if (cost.chunkBytes > memory)
        return {};
    FormatReader reader(bytes, "webp");
    const QSize size = reader.size();
    return isPhotoSize(size) && cost.chunkBytes + cost.bytesPerPixel * pixels(size) <= memory ? reader.read()
                                                                                              : QImage();
}

QImage readGif(const QByteArray &bytes, int, qint64 memory)
{
    FormatReader reader(bytes, "gif");
    const QSize size = reader.size().expandedTo(gifCanvasOf(bytes));
    return isPhotoSize(size) && 12 * pixels(size) <= memory ? reader.read() : QImage();
}

QImage readBmp(const QByteArray &bytes, int, qint64 memory)
{
    FormatReader reader(bytes, "bmp");
    const QSize size = reader.size();
    // A picture with a palette is also converted to 32 bits a pixel.
    return isPhotoSize(size) && 5 * pixels(size) <= memory ? reader.read() : QImage();
}

struct Format {
    QStringList extensions;
    bool (*matches)(const QByteArray &bytes);
    QImage (*read)(const QByteArray &bytes, int diameter, qint64 memory);
};

const QList<Format> &formats()
{
    static const QList<Format> all{
        {{u"jpg"_s, u"jpeg"_s}, [](const QByteArray &bytes) { return bytes.startsWith("\xFF\xD8\xFF"); }, readJpeg},
        {{u"png"_s},
         [](const QByteArray &bytes) { return bytes.startsWith("\x89PNG\r\n\x1A\n"); },
         [](const QByteArray &bytes, int, qint64 memory) { return decodePng(bytes, memory); }},
        // Other files that begin so, sounds for example, are refused by the reader.
        {{u"webp"_s}, [](const QByteArray &bytes) { return bytes.startsWith("RIFF"); }, readWebp},
        {{u"gif"_s},
         [](const QByteArray &bytes) { return bytes.startsWith("GIF87a") || bytes.startsWith("GIF89a"); },
         readGif},
        {{u"bmp"_s}, [](const QByteArray &bytes) { return bytes.startsWith("BM"); }, readBmp},
    };
    return all;
}

/// Chooses the format by the first bytes. QImageReader would try every plugin of the platform.
QImage read(const QByteArray &bytes, int diameter)
{
    // Base64 has four characters for three bytes, and a QString has two bytes for each character.
    const qint64 memory = maxMemory - bytes.size() - bytes.size() * 8 / 3;
    if (memory <= 0)
        return {};
    const auto format = std::ranges::find_if(formats(), [&](const Format &each) { return each.matches(bytes); });
    return format == formats().end() ? QImage() : format->read(bytes, diameter, memory);
}

/// Qt logs every damaged picture, and the app must log nothing.
void silenceQt()
{
    [[maybe_unused]] static const bool once = [] {
        QLoggingCategory::setFilterRules(QStringLiteral("qt.gui.imageio*=false\nqt.gui.icc*=false"));
        return true;
    }();
}

} // namespace

QStringList photoEndings()
{
    QStringList all;
    for (const Format &format : formats())
        all += format.extensions;
    return all;
}

QImage decodePhoto(const QByteArray &bytes, int diameter, PhotoShape shape)
{
    if (diameter <= 0)
        return {};
    silenceQt();
    // Convert before scaling: scaling a two-colour picture yields a black and white pattern.
    const QImage photo = read(bytes, diameter).convertToFormat(QImage::Format_ARGB32_Premultiplied);
    if (photo.isNull())
        return {};
    // Crop before scaling: a long strip would become enormous.
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
