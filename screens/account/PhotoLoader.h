#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QUrl>

#include <functional>

/// The bytes of a photo's file, and their base64 text (RFC 4648, padded, without line breaks).
struct LoadedPhoto {
    QByteArray bytes;
    QString base64;
};

/// Reads and encodes a photo on another thread, and calls `loaded` on the main thread if `context` still exists. Does
/// not call `loaded` if the URL is not that of a regular file, or if the file cannot be read, is empty or is larger
/// than 64 MiB. `loaded` is always destroyed on the main thread, at the latest when the application ends.
///
/// Up to eight photos load at the same time. They may finish in any order, or never.
void loadPhoto(const QUrl &item, QObject *context, std::function<void(LoadedPhoto)> loaded);
