#include "PhotoDecoder.h"

#include <QBuffer>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QPainter>
#include <QtEndian>

#include <algorithm>

namespace {

constexpr int longestSide = 16384;
constexpr qint64 largestFile = qint64(64) * 1024 * 1024;
constexpr qint64 mostPixels = qint64(64) * 1024 * 1024;

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

/// A PNG without its ancillary chunks (https://www.w3.org/TR/png/#5Chunk-layout). Compressed text in them can take
/// gigabytes to read, and none of it shows. Empty when the chunks do not add up.
QByteArray withoutAncillaryChunks(const QByteArray &png)
{
    constexpr qsizetype signature = 8;
    constexpr qsizetype overhead = 12; // length, type and checksum
    QByteArray kept = png.left(signature);
    kept.reserve(png.size());
    for (qsizetype at = signature; at + overhead <= png.size();) {
        const qsizetype length = qFromBigEndian<quint32>(png.constData() + at);
        if (length > png.size() - at - overhead)
            return {};
        const QByteArrayView type = QByteArrayView(png).sliced(at + 4, 4);
        const bool critical = type[0] >= 'A' && type[0] <= 'Z';
        if (critical || type == "tRNS")
            kept.append(png.constData() + at, overhead + length);
        at += overhead + length;
        if (type == "IEND")
            return kept;
    }
    return {};
}

} // namespace

QImage decodePhoto(const QByteArray &bytes, int diameter, PhotoShape shape)
{
    const QByteArray format = formatOf(bytes);
    if (format.isEmpty() || diameter <= 0)
        return {};
    QByteArray source = format == "png" ? withoutAncillaryChunks(bytes) : bytes;
    QBuffer buffer(&source);
    if (source.isEmpty() || !buffer.open(QIODevice::ReadOnly))
        return {};
    QImageReader reader(&buffer, format);
    reader.setAutoDetectImageFormat(false);
    reader.setAutoTransform(true);
    const QSize size = reader.size();
    if (size.isEmpty() || std::max(size.width(), size.height()) > longestSide)
        return {};
    if (format != "jpeg" && qint64(size.width()) * size.height() > mostPixels)
        return {};
    const QSize scaled = size.scaled(diameter, diameter, Qt::KeepAspectRatioByExpanding).expandedTo({1, 1});
    if (format == "jpeg" || format == "webp")
        reader.setScaledSize(scaled); // while decoding, which is what takes their time and memory
    // Before it is scaled or painted: a picture of two colours would become a black and white pattern.
    QImage photo = reader.read().convertToFormat(QImage::Format_ARGB32_Premultiplied);
    if (photo.isNull())
        return {};
    // A picture that lies on its side has been turned by now.
    if (format != "jpeg" && format != "webp")
        photo = photo.scaled(scaled, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);

    QImage circle(diameter, diameter, QImage::Format_ARGB32_Premultiplied);
    circle.fill(Qt::transparent);
    QPainter painter(&circle);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    QBrush brush(photo);
    brush.setTransform(
        QTransform::fromTranslate((diameter - photo.width()) / 2.0, (diameter - photo.height()) / 2.0));
    painter.setBrush(brush);
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
