#pragma once

#include <QByteArray>
#include <QUrl>

/// Returns the bytes of a photo that the customer picked. Returns no bytes if the URL is not that of a regular file,
/// or if the file cannot be read or is larger than 64 MiB. Reading may stall: call it from the work of a Background
/// only.
QByteArray readPhotoFile(const QUrl &file);
