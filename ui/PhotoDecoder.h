#pragma once

#include <QByteArray>
#include <QImage>
#include <QStringList>

enum class PhotoShape { Circle, Square };

/// Returns the file name extensions of the formats that decodePhoto reads, in lower case: "jpg", "png" and so on.
QStringList photoEndings();

/// Decodes a photo (JPEG, PNG, WebP, GIF or BMP, recognised by its first bytes) so that it fills a circle or square
/// of `diameter` pixels: upright, scaled and cropped around its middle, transparent outside. Returns a null image if
/// the photo is damaged, has more than 16,384 pixels a side, or needs more than 256 MiB of memory, including the
/// photo's bytes and their base64 text. Prints nothing on stderr. Thread-safe.
QImage decodePhoto(const QByteArray &bytes, int diameter, PhotoShape shape = PhotoShape::Circle);
