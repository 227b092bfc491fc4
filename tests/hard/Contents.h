#pragma once

#include <QByteArray>
#include <QFile>

/// All bytes of a file; ends the process where it cannot be read.
inline QByteArray contents(const QString &path)
{
    QFile file(path);
    if (!file.open(QFile::ReadOnly))
        qFatal("cannot read %s", qUtf8Printable(path));
    return file.readAll();
}
