#include "PhotoCost.h"

#include <QList>
#include <QtEndian>

#include <algorithm>

namespace {

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
        if (m_parts < 500 && m_whole.size() - m_size < worthACopy)
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
    static constexpr qsizetype worthACopy = qsizetype(1024) * 1024;

    QByteArray m_whole;
    qsizetype m_size;
    qsizetype m_parts = 0;
    QList<std::pair<qsizetype, qsizetype>> m_gaps;
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

} // namespace

JpegOutline jpegOutlineOf(const QByteArray &jpeg, qint64 memory)
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

WebpCost webpCostOf(QByteArrayView webp)
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

QSize gifCanvasOf(const QByteArray &gif)
{
    if (gif.size() < 10)
        return {};
    return {qFromLittleEndian<quint16>(gif.constData() + 6), qFromLittleEndian<quint16>(gif.constData() + 8)};
}
