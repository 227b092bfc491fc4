#pragma once

#include <QByteArray>
#include <QList>
#include <QSize>

/// Good pictures of a format ("png", "jpeg" or "webp") in its many variants, small enough to be decoded very often.
QList<QByteArray> corpus(const QByteArray &format);

/// One picture of two colours.
QByteArray picture(const char *format, QSize size, int quality = -1);

/// With checksums that are right again after a PNG has been changed.
QByteArray withRightChecksums(QByteArray png);
