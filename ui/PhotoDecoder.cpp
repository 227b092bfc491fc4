#include "PhotoDecoder.h"

#include "PngDecoder.h"

#include <QBuffer>
#include <QImageReader>
#include <QLoggingCategory>
#include <QPainter>
#include <QtEndian>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 mebibyte = qint64(1024) * 1024;
/// The memory for the photo's bytes, their base64 text and the decoding. A little less than the documented 256 MiB,
/// since the costs below are estimates.
constexpr qint64 maxMemory = 250 * mebibyte;
/// A scan of a JPEG may take a few bytes in the file, but as much time as all of the picture's pixels.
constexpr qint64 maxScannedPixels = qint64(1) << 30;

qint64 pixels(QSize size) { return qint64(size.width()) * size.height(); }

/// The bytes of a file without some of its parts.
class Excerpt {
public:
    explicit Excerpt(const QByteArray &whole) : m_whole(whole), m_size(whole.size()) {}

    void skip(qsizetype from, qsizetype to)
    {
        m_size -= to - from;
        ++m_parts;
        if (!m_gaps.isEmpty() && m_gaps.last().second == from)
            m_gaps.last().second = to;
        else if (m_gaps.size() <= maxGaps)
            m_gaps.append({from, to});
    }
    /// Returns no bytes if there are too many gaps, or if the copy needs more than `memory` bytes.
    QByteArray bytes(qint64 memory) const
    {
        // Small savings are not worth a copy.
        if (m_parts < 500 && m_whole.size() - m_size < mebibyte)
            return m_whole;
        if (m_size > memory || m_gaps.size() > maxGaps)
            return {};
        QByteArray kept;
        kept.reserve(m_size);
        qsizetype at = 0;
        for (const auto &[from, to] : m_gaps) {
            kept.append(m_whole.constData() + at, from - at);
            at = to;
        }
        return kept.append(m_whole.constData() + at, m_whole.size() - at);
    }

private:
    static constexpr qsizetype maxGaps = 1000;

    QByteArray m_whole;
    qsizetype m_size;
    qsizetype m_parts = 0;
    QList<std::pair<qsizetype, qsizetype>> m_gaps;
};

/// Reads one format and tries no other.
class FormatReader : public QImageReader {
public:
    FormatReader(const QByteArray &bytes, const char *format)
    {
        m_buffer.setData(bytes);
        m_buffer.open(QIODevice::ReadOnly);
        setDevice(&m_buffer);
        setFormat(format);
        setAutoDetectImageFormat(false);
        setAutoTransform(true);
    }

private:
    QBuffer m_buffer;
};

/// The bytes of a JPEG that are decoded, and what decoding needs besides the picture.
struct JpegOutline {
    QByteArray bytes;
    /// The decoder keeps all coefficients if the picture needs more than one scan (ITU-T T.81, 4.8.1).
    qint64 coefficientBytes = 0;
    int scans = 0;
};

/// Estimates the number of samples from a frame header (ITU-T T.81, B.2.2).
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

/// Skips comments, profiles and metadata except the first Exif block, which may hold the orientation: the time for
/// reading them grows with the square of their number.
JpegOutline outlineOf(const QByteArray &jpeg, qint64 memory)
{
    Excerpt excerpt(jpeg);
    JpegOutline outline;
    qint64 samples = 0;
    bool needsCoefficients = false;
    int components = 0;
    bool oriented = false;
    for (qsizetype at = 2; (at = jpeg.indexOf('\xFF', at)) >= 0 && at + 4 <= jpeg.size();) {
        const auto marker = static_cast<uchar>(jpeg[at + 1]);
        // Fill bytes, and markers within the coded data.
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
            excerpt.skip(at, end);
        oriented = oriented || exif;
        if (marker < 0xD0 && marker != 0xC4 && marker != 0xC8 && marker != 0xCC && contents.size() >= 6) {
            samples += samplesOf(contents);
            components = static_cast<unsigned char>(contents[5]);
            needsCoefficients = needsCoefficients || marker % 4 == 2; // progressive
        }
        if (marker == 0xDA && !contents.isEmpty()) {
            ++outline.scans;
            needsCoefficients =
                needsCoefficients || outline.scans > 1 || static_cast<unsigned char>(contents[0]) != components;
        }
        at = end;
    }
    outline.coefficientBytes = needsCoefficients ? 2 * samples : 0;
    outline.bytes = excerpt.bytes(memory);
    return outline;
}

/// The memory that decoding a WebP needs.
struct WebpCost {
    qint64 chunkBytes = 0;
    int bytesPerPixel = 4;
};

WebpCost costOf(QByteArrayView webp)
{
    constexpr qsizetype chunkHeader = 8; // type and length
    // The decoder copies the file, and a colour profile once more.
    WebpCost cost{2 * webp.size()};
    for (qsizetype at = 12; at + chunkHeader <= webp.size();) {
        const QByteArrayView type = webp.sliced(at, 4);
        cost.chunkBytes += 100;
        if (type == "VP8L" || type == "ALPH")
            cost.bytesPerPixel = std::max(cost.bytesPerPixel, 10);
        if (type == "ANMF")
            cost.bytesPerPixel = 12;
        const qint64 length = qFromLittleEndian<quint32>(webp.constData() + at + 4);
        at += chunkHeader + length + length % 2;
    }
    return cost;
}

/// An animation is decoded onto its canvas, which may be larger than its first frame.
QSize canvasOf(const QByteArray &gif)
{
    if (gif.size() < 10)
        return {};
    return {qFromLittleEndian<quint16>(gif.constData() + 6), qFromLittleEndian<quint16>(gif.constData() + 8)};
}

/// Scales large pictures while decoding, which saves time and memory.
QImage readJpeg(const QByteArray &bytes, int diameter, qint64 memory)
{
    const JpegOutline outline = outlineOf(bytes, memory);
    if (!outline.bytes.isSharedWith(bytes))
        memory -= outline.bytes.size();
    FormatReader reader(outline.bytes, "jpeg");
    const QSize size = reader.size();
    if (!isPhotoSize(size) || outline.scans * pixels(size) > maxScannedPixels)
        return {};
    QSize scaled = size.scaled(diameter, diameter, Qt::KeepAspectRatioByExpanding).expandedTo({1, 1});
    if (scaled.width() < size.width())
        reader.setScaledSize(scaled);
    else
        scaled = size;
    // Qt scales in two steps; the first one yields up to twice the wanted width and height.
    if (outline.coefficientBytes + 8 * std::min(pixels(size), 4 * pixels(scaled)) > memory)
        return {};
    return reader.read();
}

QImage readWebp(const QByteArray &bytes, int, qint64 memory)
{
    const WebpCost cost = costOf(bytes);
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
    const QSize size = reader.size().expandedTo(canvasOf(bytes));
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
        {{u"webp"_s},
         [](const QByteArray &bytes) { return bytes.startsWith("RIFF") && bytes.mid(8, 4) == "WEBP"; },
         readWebp},
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
