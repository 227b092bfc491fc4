#pragma once

#include <QByteArray>
#include <QImage>

/// Whether a photo may have this size: 1 to 16,384 pixels a side.
bool isPhotoSize(QSize size);

/// Decodes a PNG in at most so many bytes of memory and ten seconds' computing; null when that cannot be. Not through
/// Qt, whose reader lets libpng print its errors on stderr and takes its time: what comes after the last row may be
/// gigabytes once it is unpacked.
QImage decodePng(const QByteArray &bytes, qint64 memory);
