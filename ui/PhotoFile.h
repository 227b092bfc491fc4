#pragma once

#include <QByteArray>
#include <QUrl>

/// In bytes.
inline constexpr qint64 largestPhotoFile = qint64(64) * 1024 * 1024;

/// Returns the bytes of a photo that the customer picked. Returns no bytes if the URL is not that of a regular file,
/// or if the file cannot be read or is larger than `largestPhotoFile`. Reading may stall: call it from the work of a
/// Background only.
QByteArray readPhotoFile(const QUrl &file);
