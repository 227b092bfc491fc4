#pragma once

#include <QByteArray>
#include <QImage>

/// Returns whether a photo of this size is accepted: 1 to 16,384 pixels a side.
bool isPhotoSize(QSize size);

/// Decodes a PNG. Returns a null image if it is damaged, or needs more than `memory` bytes or ten seconds of
/// processor time. Replaces Qt's reader, which lets libpng print errors on stderr and also reads what follows the
/// last row: that may be gigabytes once it is unpacked.
QImage decodePng(const QByteArray &bytes, qint64 memory);
