#include "PostponedWrites.h"
#include "StoreFile.h"

#include <QDataStream>

#include <algorithm>

#define XXH_INLINE_ALL
#include <xxhash.h>

using namespace Qt::StringLiterals;

namespace {

/// Keeps the format when Qt's own changes.
constexpr auto format = QDataStream::Qt_6_4;

/// More than a few photos; a longer file is not ours.
constexpr qint64 largest = qint64(512) * 1024 * 1024;

quint64 checksumOf(const QByteArray &bytes)
{
    return XXH3_64bits(bytes.constData(), static_cast<size_t>(bytes.size()));
}

} // namespace

PostponedWrites::PostponedWrites(const QString &path) : m_file(path + "-postponed"_L1) {}

SessionStore::Values PostponedWrites::read() const
{
    SessionStore::Values all;
    QFile file(m_file.fileName());
    if (!file.open(QFile::ReadOnly))
        return all;
    const QByteArray content = file.read(std::min(file.size(), largest));
    QDataStream stream(content);
    stream.setVersion(format);
    QByteArray write;
    quint64 checksum = 0;
    qint64 complete = 0;
    while (!stream.atEnd() && (stream >> write >> checksum).status() == QDataStream::Ok &&
           checksum == checksumOf(write)) {
        QDataStream values(write);
        values.setVersion(format);
        quint8 key = 0;
        QByteArray value;
        while (!values.atEnd() && (values >> key >> value).status() == QDataStream::Ok &&
               key < SessionStore::keys.size())
            all.append({SessionStore::keys[key], value});
        complete = stream.device()->pos();
    }
    file.close();
    QFile::resize(m_file.fileName(), complete);
    return all;
}

void PostponedWrites::add(const SessionStore::Values &values)
{
    if (!m_file.isOpen() && (!StoreFile::makeFile(m_file.fileName()).isEmpty() ||
                             !m_file.open(QFile::WriteOnly | QFile::Append | QFile::Unbuffered)))
        return;
    QByteArray write;
    QDataStream stream(&write, QDataStream::WriteOnly);
    stream.setVersion(format);
    for (const auto &[key, value] : values)
        stream << static_cast<quint8>(key) << value;
    QByteArray record;
    QDataStream records(&record, QDataStream::WriteOnly);
    records.setVersion(format);
    records << write << checksumOf(write);
    const qint64 before = m_file.size();
    if (m_file.write(record) != record.size())
        m_file.resize(before);
}

void PostponedWrites::clear() { QFile::resize(m_file.fileName(), 0); }

void PostponedWrites::synchronise() const { StoreFile::synchronise(m_file.fileName()); }

void PostponedWrites::remove()
{
    m_file.close();
    m_file.remove();
}
