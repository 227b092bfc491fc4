#pragma once

#include <QByteArray>
#include <QUrl>

/// The bytes of a picked photo's file; none when it is no file, cannot be read, is empty or has more than 64 MiB.
/// For the work of a `Background`, since reading may stall.
QByteArray readPhotoFile(const QUrl &file);
