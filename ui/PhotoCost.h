#pragma once

#include <QByteArray>
#include <QSize>

// What decoding a photo needs, estimated from its bytes: a small file may need gigabytes or hours.

/// The bytes of a JPEG to be decoded, and what decoding them needs besides the picture.
struct JpegOutline {
    QByteArray bytes;
    /// The decoder keeps all coefficients if the picture needs more than one scan (ITU-T T.81, 4.8.1).
    qint64 coefficientBytes = 0;
    int scans = 0;
};

/// Leaves out comments, profiles and metadata except the first Exif block, which may hold the orientation: the time
/// for reading them grows with the square of their number. The bytes are the same, and not copied, if that saves
/// little, and empty if there are too many gaps, or if the copy needs more than `memory` bytes. Reads damaged files
/// too.
JpegOutline jpegOutlineOf(const QByteArray &jpeg, qint64 memory);

/// The memory that decoding a WebP needs.
struct WebpCost {
    qint64 chunkBytes = 0;
    int bytesPerPixel = 4;
};

/// Reads damaged files too.
WebpCost webpCostOf(QByteArrayView webp);

/// An animation is decoded onto its canvas, which may be larger than its first frame. Empty if the file is too short.
QSize gifCanvasOf(const QByteArray &gif);
