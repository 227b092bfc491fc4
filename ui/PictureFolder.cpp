#include "PictureFolder.h"

#include "Background.h"
#include "PhotoDecoder.h"

#include <QDirIterator>
#include <QFileInfo>
#include <QPointer>
#include <QStandardPaths>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

enum Role { FileRole = Qt::UserRole, NameRole };

/// Starts every read at once, since an earlier one may have stalled on a network drive that is gone.
Background &folderReader()
{
    static auto *const made = new Background(8, std::chrono::milliseconds(0));
    return *made;
}

QStringList picturesByAge(const QString &folder)
{
    QStringList endings;
    for (const QString &ending : photoEndings())
        endings += u"*."_s + ending;
    QList<std::pair<QDateTime, QString>> found;
    QDirIterator each(folder, endings, QDir::Files | QDir::Readable, QDirIterator::Subdirectories);
    while (each.hasNext()) {
        Background::signOfLife();
        const QString path = each.next();
        found.append({each.fileInfo().lastModified(), path});
        // Shorten the list now and then, so that a huge folder does not need huge memory.
        if (found.size() > 4 * PictureFolder::most) {
            std::nth_element(found.begin(), found.begin() + PictureFolder::most, found.end(), std::greater<>());
            found.resize(PictureFolder::most);
        }
    }
    std::sort(found.begin(), found.end(), std::greater<>());
    QStringList paths;
    for (const auto &[time, path] : found.first(std::min(found.size(), PictureFolder::most)))
        paths.append(path);
    return paths;
}

} // namespace

void PictureList::setFiles(const QStringList &files)
{
    beginResetModel();
    m_files = files;
    endResetModel();
}

int PictureList::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_files.size());
}

QVariant PictureList::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const QString &path = m_files[index.row()];
    switch (role) {
    case FileRole:
        return QUrl::fromLocalFile(path);
    case NameRole:
        return QFileInfo(path).completeBaseName();
    default:
        return {};
    }
}

QHash<int, QByteArray> PictureList::roleNames() const { return {{FileRole, "file"}, {NameRole, "name"}}; }

void PictureFolder::refresh() { refreshWith(picturesByAge); }

void PictureFolder::refreshWith(std::function<QStringList(const QString &folder)> list)
{
    setReady(false);
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
    const QPointer<PictureFolder> self(this);
    folderReader().start([list = std::move(list), folder] { return list(folder); },
                         [self, request = ++m_latestRequest] { return self && self->m_latestRequest == request; },
                         [self](const QStringList &files) {
                             self->m_pictures.setFiles(files);
                             self->setReady(true);
                         });
}

void PictureFolder::setReady(bool ready)
{
    m_ready = ready;
    emit readyChanged();
}
