#pragma once

#include "FileCalls.h"

#include <QByteArray>
#include <QHash>
#include <QString>

#include <random>

/// A disk below one folder that keeps through a power loss what was synchronised, and of the rest any part: a file's
/// bytes with the file's synchronisation, a name with that of its folder. Sectors are written whole, and what a call
/// does not write to is left alone; in what order the disk writes is its own business.
class Disk {
public:
    explicit Disk(QByteArray folder) : m_folder(std::move(folder)) {}

    void take(const FileCalls::Call &call);

    /// Makes below `target` what the disk holds after a loss of power now.
    void lose(std::mt19937_64 &random, const QString &target) const;

private:
    /// A write, or with no bytes a new size.
    struct Change {
        qint64 at = 0;
        QByteArray bytes;
        bool isSize = false;
    };
    struct File {
        QByteArray safe;
        QList<Change> changes;
        bool isDirectory = false;
    };
    /// What a name stands for: the number of a file, or -1 for none.
    struct Name {
        QByteArray path;
        int file = -1;
    };

    static void apply(QByteArray &content, const Change &change, qint64 from, qint64 size);
    static QByteArray remains(const File &file, std::mt19937_64 &random);
    void name(const QByteArray &path, int file);
    QHash<QByteArray, int> names(std::mt19937_64 &random) const;

    QByteArray m_folder;
    QList<File> m_files;
    QHash<QByteArray, int> m_names;
    QHash<QByteArray, int> m_safeNames;
    QList<Name> m_newNames;
};
