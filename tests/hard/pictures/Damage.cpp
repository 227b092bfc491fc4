#include "Damage.h"

#include "Contents.h"
#include "PhotoDecoder.h"

#include <QColorSpace>
#include <QDir>
#include <QImage>
#include <QImageWriter>
#include <QPainter>
#include <QtEndian>

#include <algorithm>
#include <array>
#include <cstdio>
#include <ctime>
#include <random>
#include <zlib.h>

using namespace Qt::StringLiterals;

namespace {

constexpr double longestSeconds = 3;

QImage drawn(QSize size, QImage::Format format)
{
    QImage image(size, QImage::Format_ARGB32);
    image.fill(Qt::blue);
    QPainter painter(&image);
    painter.fillRect(0, 0, size.width() / 2, size.height(), Qt::red);
    painter.drawLine(0, 0, size.width(), size.height());
    painter.end();
    return image.convertToFormat(format);
}

double threadSeconds()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

/// Whether the decoder gives what it promises for any bytes: nothing, or a picture of this size, and that soon.
bool keepsItsPromise(const QByteArray &bytes, int diameter, PhotoShape shape)
{
    const double start = threadSeconds();
    const QImage decoded = decodePhoto(bytes, diameter, shape);
    return (decoded.isNull() || decoded.size() == QSize(diameter, diameter)) &&
           threadSeconds() - start < longestSeconds;
}

/// Makes the checksums of a PNG right again: with wrong ones nearly all damage would end at the first chunk.
void repairChecksums(QByteArray &png)
{
    constexpr qsizetype overhead = 12; // length, type and checksum
    for (qsizetype at = 8; at + overhead <= png.size();) {
        const qsizetype length = qFromBigEndian<quint32>(png.constData() + at);
        if (length > png.size() - at - overhead)
            break;
        const auto *const data = reinterpret_cast<const Bytef *>(png.constData() + at + 4);
        const auto sum = crc32(0, data, static_cast<uInt>(length + 4));
        qToBigEndian(static_cast<quint32>(sum), png.data() + at + 8 + length);
        at += overhead + length;
    }
}

/// A standard engine used without the standard distributions, whose numbers differ from library to library.
class Damage {
public:
    explicit Damage(quint32 seed) : m_random(seed) {}

    qsizetype below(qsizetype limit) { return limit > 0 ? static_cast<qsizetype>(m_random() % limit) : 0; }

    void apply(QByteArray &bytes, const QByteArray &other)
    {
        // Half of the time at the front, where most of what matters stands.
        const qsizetype at = below(below(2) ? bytes.size() : std::min<qsizetype>(48, bytes.size()));
        const qsizetype length = below(std::min<qsizetype>(64, bytes.size() - at)) + 1;
        switch (below(7)) {
        case 0:
            bytes[at] = static_cast<char>(bytes[at] ^ (1 << below(8)));
            break;
        case 1:
            bytes[at] = static_cast<char>(below(256));
            break;
        case 2:
            bytes.remove(at, length);
            break;
        case 3:
            bytes.insert(at, bytes.mid(at, length).repeated(3));
            break;
        case 4:
            bytes.replace(at, 4, number());
            break;
        case 5:
            bytes.replace(at, length, other.mid(below(other.size()), length));
            break;
        default:
            bytes.truncate(std::max<qsizetype>(bytes.size() - length, 16));
        }
    }

private:
    /// One that lengths and sizes are often not checked against.
    QByteArray number()
    {
        constexpr std::array<const char *, 7> all{"\xFF\xFF\xFF\xFF", "\x7F\xFF\xFF\xFF", "\x80\x00\x00\x00",
                                                  "\x00\x00\x00\x00", "\x00\x00\x40\x00", "\xFF\xFF\x00\x00",
                                                  "\x00\x00\x00\x01"};
        return {all[static_cast<std::size_t>(below(all.size()))], 4};
    }

    std::mt19937 m_random;
};

int tell(const char *what, const QString &kind, qint64 which)
{
    std::printf("%s %s %lld\n", what, qPrintable(kind), static_cast<long long>(which));
    return 1;
}

} // namespace

void makePictures(const QString &folder)
{
    const auto write = [&folder](const QByteArray &kind, const QString &name, const QImage &image, int quality = -1) {
        QImageWriter writer(folder + u'/' + QString::fromLatin1(kind) + u'-' + name, kind);
        writer.setQuality(quality);
        writer.setProgressiveScanWrite(name == u"progressive");
        if (!writer.write(image))
            qFatal("cannot write %s", kind.constData());
    };
    for (const auto format :
         {QImage::Format_RGB32, QImage::Format_ARGB32, QImage::Format_Indexed8, QImage::Format_Mono,
          QImage::Format_Grayscale8, QImage::Format_RGBX64, QImage::Format_RGBA64})
        write("png", QString::number(format), drawn({31, 22}, format));
    QImage chatty = drawn({33, 20}, QImage::Format_RGB32);
    chatty.setText(u"Comment"_s, QString(3000, u'x'));
    chatty.setColorSpace(QColorSpace::DisplayP3);
    for (const char *kind : {"png", "jpeg", "webp"})
        write(kind, u"chatty"_s, chatty, 80);
    const QImage picture = drawn({40, 31}, QImage::Format_RGB32);
    write("jpeg", u"baseline"_s, picture, 90);
    write("jpeg", u"progressive"_s, picture, 40);
    write("jpeg", u"grey"_s, drawn({33, 20}, QImage::Format_Grayscale8), 80);
    const QImage clear = drawn({25, 18}, QImage::Format_ARGB32);
    for (const int quality : {40, 100}) {
        write("webp", u"picture-%1"_s.arg(quality), picture, quality);
        write("webp", u"clear-%1"_s.arg(quality), clear, quality);
    }
}

int tryDamage(const QString &folder, const QString &kind, int cuts, quint32 seed, int mutations)
{
    QList<QByteArray> good;
    const auto files = QDir(folder).entryInfoList({kind + u"-*"_s}, QDir::Files, QDir::Name);
    for (const QFileInfo &file : files)
        good += contents(file.filePath());
    int failures = 0;
    for (const QByteArray &each : good) {
        if (decodePhoto(each, 20).isNull())
            failures += tell("refused", kind, each.size());
        for (int cut = 0; cut < cuts; ++cut) {
            if (!keepsItsPromise(each.first(each.size() * cut / cuts), 20, PhotoShape::Circle))
                failures += tell("cut", kind, each.size() * cut / cuts);
        }
    }
    for (int done = 0; done < mutations; ++done, ++seed) {
        Damage damage(seed);
        QByteArray bytes = good[damage.below(good.size())];
        for (qsizetype more = damage.below(4); more >= 0; --more)
            damage.apply(bytes, good[damage.below(good.size())]);
        if (kind == u"png" && damage.below(4))
            repairChecksums(bytes);
        const auto shape = damage.below(2) ? PhotoShape::Circle : PhotoShape::Square;
        if (!keepsItsPromise(bytes, 1 + static_cast<int>(damage.below(200)), shape))
            failures += tell("mutation", kind, seed);
    }
    return failures;
}
