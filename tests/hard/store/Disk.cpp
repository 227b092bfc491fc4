#include "Disk.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

using FileCalls::Call;
using FileCalls::Kind;

namespace {

constexpr qint64 sector = 512;

QByteArray folderOf(const QByteArray &path) { return path.first(path.lastIndexOf('/')); }

} // namespace

void Disk::apply(QByteArray &content, const Change &change, qint64 from, qint64 size)
{
    if (content.size() < change.at + from + size)
        content.resize(change.at + from + size, '\0');
    content.replace(change.at + from, size, change.bytes.sliced(from, size));
}

void Disk::name(const QByteArray &path, int file)
{
    m_names[path] = file;
    m_newNames.append({path, file});
}

void Disk::take(const Call &call)
{
    const int file = m_names.value(call.path, -1);
    switch (call.kind) {
    case Kind::MakeDirectory:
    case Kind::Create:
        m_files.append({{}, {}, call.kind == Kind::MakeDirectory});
        name(call.path, static_cast<int>(m_files.size()) - 1);
        break;
    case Kind::Write:
        m_files[file].changes.append({call.at, call.bytes, false});
        break;
    case Kind::Truncate:
        m_files[file].changes.append({call.at, {}, true});
        break;
    case Kind::Sync:
        if (file >= 0) {
            for (const Change &change : std::as_const(m_files[file].changes)) {
                if (change.isSize)
                    m_files[file].safe.resize(change.at, '\0');
                else
                    apply(m_files[file].safe, change, 0, change.bytes.size());
            }
            m_files[file].changes.clear();
        }
        for (qsizetype i = 0; i < m_newNames.size();) {
            if (folderOf(m_newNames[i].path) == call.path) {
                const Name safe = m_newNames.takeAt(i);
                m_safeNames[safe.path] = safe.file;
            } else {
                ++i;
            }
        }
        break;
    case Kind::Remove:
        name(call.path, -1);
        break;
    case Kind::Rename:
        name(call.to, file);
        name(call.path, -1);
        break;
    case Kind::Mode:
    case Kind::Mark:
        break;
    }
}

QByteArray Disk::remains(const File &file, std::mt19937_64 &random)
{
    QByteArray content = file.safe;
    // All, none, or some of what was not synchronised.
    const auto likely = random() % 3;
    const auto happened = [&] { return likely == 2 || (likely == 1 && random() % 2 == 0); };
    for (const Change &change : file.changes) {
        if (change.isSize) {
            if (happened())
                content.resize(change.at, '\0');
            continue;
        }
        for (qint64 from = 0; from < change.bytes.size();) {
            const qint64 size = std::min(sector - (change.at + from) % sector, change.bytes.size() - from);
            if (happened())
                apply(content, change, from, size);
            from += size;
        }
    }
    return content;
}

QHash<QByteArray, int> Disk::names(std::mt19937_64 &random) const
{
    QHash<QByteArray, int> found = m_safeNames;
    const auto likely = random() % 3;
    for (const Name &each : m_newNames) {
        if (likely == 2 || (likely == 1 && random() % 2 == 0))
            found[each.path] = each.file;
    }
    return found;
}

void Disk::lose(std::mt19937_64 &random, const QString &target) const
{
    const QHash<QByteArray, int> found = names(random);
    const auto isThere = [&](QByteArray path) {
        for (; path != m_folder; path = folderOf(path)) {
            if (found.value(path, -1) < 0)
                return false;
        }
        return true;
    };
    for (auto each = found.cbegin(); each != found.cend(); ++each) {
        const QString path = target + QFile::decodeName(each.key().sliced(m_folder.size()));
        // The index of the log is shared memory: SQLite makes it anew after every start.
        if (!isThere(each.key()) || each.key().endsWith("-shm"))
            continue;
        if (m_files[each.value()].isDirectory) {
            QDir().mkpath(path);
            continue;
        }
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        const QByteArray content = remains(m_files[each.value()], random);
        if (!file.open(QFile::WriteOnly) || file.write(content) != content.size())
            qFatal("%s cannot be written", qUtf8Printable(path));
    }
}
