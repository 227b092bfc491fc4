#include "Corpus.h"

#include <QBuffer>
#include <QColorSpace>
#include <QImage>
#include <QImageWriter>
#include <QPainter>
#include <QtEndian>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace {

QImage drawn(QSize size, QImage::Format format = QImage::Format_RGB32)
{
    QImage image(size, QImage::Format_ARGB32);
    image.fill(Qt::blue);
    QPainter painter(&image);
    painter.fillRect(0, 0, size.width() / 2, size.height(), Qt::red);
    painter.fillRect(size.width() / 4, size.height() / 4, size.width() / 2, size.height() / 2,
                     QColor(9, 99, 200, 99));
    painter.drawLine(0, 0, size.width(), size.height());
    painter.end();
    return image.convertToFormat(format);
}

QByteArray written(const QImage &image, const char *format, int quality = -1, bool progressive = false)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    QImageWriter writer(&buffer, format);
    writer.setQuality(quality);
    writer.setProgressiveScanWrite(progressive);
    if (!writer.write(image))
        qFatal("cannot write %s", format);
    return bytes;
}

template <class Number>
QByteArray bigEndian(Number number)
{
    QByteArray bytes(sizeof(Number), '\0');
    qToBigEndian(number, bytes.data());
    return bytes;
}

QByteArray littleEndian(quint32 number, int bytes)
{
    QByteArray all(4, '\0');
    qToLittleEndian(number, all.data());
    return all.first(bytes);
}

quint32 checksum(QByteArrayView bytes)
{
    quint32 crc = ~quint32(0);
    for (const char byte : bytes) {
        crc ^= static_cast<uchar>(byte);
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc >> 1) ^ (crc & 1 ? 0xEDB88320U : 0U);
    }
    return ~crc;
}

QByteArray chunk(const QByteArray &type, const QByteArray &data)
{
    return bigEndian(static_cast<quint32>(data.size())) + type + data + bigEndian(checksum(type + data));
}

/// What Qt does not write: grey, in the seven passes of Adam7 (https://www.w3.org/TR/png/#8Interlace).
QByteArray interlaced(int width, int height)
{
    struct Pass {
        int x, y, dx, dy;
    };
    constexpr std::array<Pass, 7> passes{
        {{0, 0, 8, 8}, {4, 0, 8, 8}, {0, 4, 4, 8}, {2, 0, 4, 4}, {0, 2, 2, 4}, {1, 0, 2, 2}, {0, 1, 1, 2}}};
    QByteArray rows;
    for (const Pass &pass : passes) {
        for (int y = pass.y; y < height && pass.x < width; y += pass.dy)
            rows += '\0' + QByteArray((width - pass.x + pass.dx - 1) / pass.dx, static_cast<char>(y));
    }
    return "\x89PNG\r\n\x1A\n" +
           chunk("IHDR", bigEndian(width) + bigEndian(height) + QByteArray("\x08\x00\x00\x00\x01", 5)) +
           chunk("IDAT", qCompress(rows).sliced(4)) + chunk("IEND", {});
}

QList<QByteArray> pngs()
{
    QList<QByteArray> all;
    for (const auto format :
         {QImage::Format_RGB32, QImage::Format_ARGB32, QImage::Format_Indexed8, QImage::Format_Mono,
          QImage::Format_Grayscale8, QImage::Format_RGBX64, QImage::Format_RGBA64})
        all.append(written(drawn({31, 22}, format), "png"));
    QImage chatty = drawn({20, 20});
    chatty.setText(u"Comment"_s, QString(3000, u'x'));
    chatty.setColorSpace(QColorSpace::DisplayP3);
    all.append(written(chatty, "png"));
    all.append(interlaced(29, 17));
    return all;
}

/// After the JPEG's first two bytes, where cameras put it (JEITA CP-3451): lying on its side.
QByteArray withExif(QByteArray jpeg)
{
    const QByteArray exif("Exif\0\0MM\0\x2A\0\0\0\x08\0\x01\x01\x12\0\x03\0\0\0\x01\0\x06\0\0\0\0\0\0", 32);
    return jpeg.insert(2, "\xFF\xE1" + bigEndian(static_cast<quint16>(exif.size() + 2)) + exif);
}

QList<QByteArray> jpegs()
{
    QImage chatty = drawn({33, 20});
    chatty.setText(u"Comment"_s, QString(3000, u'x'));
    chatty.setColorSpace(QColorSpace::DisplayP3);
    const QImage grey = drawn({33, 20}, QImage::Format_Grayscale8);
    return {written(drawn({40, 31}), "jpeg", 90),
            written(drawn({40, 31}), "jpeg", 40, true),
            written(grey, "jpeg", 80),
            written(chatty, "jpeg", 80),
            withExif(written(drawn({40, 31}), "jpeg")),
            withExif(written(drawn({24, 40}), "jpeg", 60, true))};
}

QByteArray riffChunk(const QByteArray &type, QByteArray data)
{
    const QByteArray length = littleEndian(static_cast<quint32>(data.size()), 4);
    if (data.size() % 2)
        data += '\0';
    return type + length + data;
}

/// What Qt does not write: a moving picture of two frames
/// (https://developers.google.com/speed/webp/docs/riff_container).
QByteArray moving(const QByteArray &still, QSize size)
{
    const QByteArray side = littleEndian(size.width() - 1, 3) + littleEndian(size.height() - 1, 3);
    const QByteArray frame = QByteArray(6, '\0') + side + littleEndian(40, 3) + '\0' + still.sliced(12);
    const QByteArray all = "WEBP" + riffChunk("VP8X", QByteArray("\x12\0\0\0", 4) + side) +
                           riffChunk("ANIM", QByteArray(6, '\0')) + riffChunk("ANMF", frame) +
                           riffChunk("ANMF", frame);
    return riffChunk("RIFF", all);
}

QList<QByteArray> webps()
{
    QImage profiled = drawn({30, 30});
    profiled.setColorSpace(QColorSpace::DisplayP3);
    const QImage clear = drawn({25, 18}, QImage::Format_ARGB32);
    const QByteArray flat = written(drawn({16, 16}), "webp", 50);
    return {written(drawn({40, 31}), "webp", 60), written(drawn({40, 31}), "webp", 100), written(clear, "webp", 40),
            written(clear, "webp", 100),          written(profiled, "webp", 70),         moving(flat, {16, 16})};
}

} // namespace

QList<QByteArray> corpus(const QByteArray &format)
{
    if (format == "png")
        return pngs();
    if (format == "jpeg")
        return jpegs();
    if (format == "webp")
        return webps();
    qFatal("There are no pictures of the format %s", format.constData());
}

QByteArray picture(const char *format, QSize size, int quality) { return written(drawn(size), format, quality); }

QByteArray withRightChecksums(QByteArray png)
{
    constexpr qsizetype overhead = 12; // length, type and checksum
    for (qsizetype at = 8; at + overhead <= png.size();) {
        const qsizetype length = qFromBigEndian<quint32>(png.constData() + at);
        if (length > png.size() - at - overhead)
            break;
        qToBigEndian(checksum(QByteArrayView(png).sliced(at + 4, 4 + length)), png.data() + at + 8 + length);
        at += overhead + length;
    }
    return png;
}
