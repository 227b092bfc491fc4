#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QUrl>

#include <functional>

/// The bytes of a picked photo, as they are in its file, and their base64 text (RFC 4648, padded, without line
/// breaks).
struct LoadedPhoto {
    QByteArray bytes;
    QString base64;
};

/// Reads and encodes a photo off the main thread and hands it to `loaded` on the main thread, while `context` lives.
/// For what is no file, cannot be read, is empty or has more than 64 MiB nothing is handed over. Whatever becomes of
/// the photo, `loaded` is destroyed on the main thread, when the application ends at the latest.
///
/// A photo waits for no other: one that was asked for earlier may come later, or never. Eight are read at once, at
/// most.
void loadPhoto(const QUrl &item, QObject *context, std::function<void(LoadedPhoto)> loaded);
