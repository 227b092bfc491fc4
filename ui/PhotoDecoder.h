#pragma once

#include <QByteArray>
#include <QImage>

/// Decodes a photo (JPEG, PNG, WebP, GIF or BMP, told by its first bytes) so that it fills a circle of `diameter`
/// pixels: upright, scaled and cropped around its middle, transparent outside. Null for anything that cannot be
/// decoded within bounds: 16,384 pixels a side, and 64 megapixels where the format cannot be scaled while decoding.
/// Safe on any thread.
QImage decodePhoto(const QByteArray &bytes, int diameter);
