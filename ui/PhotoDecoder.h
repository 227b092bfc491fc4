#pragma once

#include <QByteArray>
#include <QImage>
#include <QStringList>

enum class PhotoShape { Circle, Square };

/// How the names of files end, in small letters, that decodePhoto reads: "jpg", "png" and so on.
QStringList photoEndings();

/// Decodes a photo (JPEG, PNG, WebP, GIF or BMP, told by its first bytes) so that it fills a circle or square of
/// `diameter` pixels: upright, scaled and cropped around its middle, transparent outside. Null for anything that
/// cannot be decoded within bounds: 16,384 pixels a side, and 256 MiB of memory with the photo's bytes and their
/// base64 text. Says nothing on stderr. Safe on any thread.
QImage decodePhoto(const QByteArray &bytes, int diameter, PhotoShape shape = PhotoShape::Circle);
