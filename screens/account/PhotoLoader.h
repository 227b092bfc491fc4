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

/// Reads and encodes a photo off the main thread, one after the other in the order of the calls, and hands it to
/// `loaded` on the main thread, while `context` lives. For what is no file, cannot be read, is empty or has more than
/// 64 MiB nothing is handed over.
void loadPhoto(const QUrl &item, QObject *context, std::function<void(LoadedPhoto)> loaded);
