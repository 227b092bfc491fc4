#include "PhotoLoader.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QPointer>
#include <QThreadPool>

#include <optional>

namespace {

constexpr qint64 largestFile = qint64(64) * 1024 * 1024;

QThreadPool &loaderThread()
{
    static auto *const pool = [] {
        auto *made = new QThreadPool(qApp);
        made->setMaxThreadCount(1);
        return made;
    }();
    return *pool;
}

std::optional<LoadedPhoto> load(const QUrl &item)
{
    // A phone's picker gives addresses that Qt opens as files too.
    const QString path = item.isLocalFile() ? item.toLocalFile() : item.toString();
    // Whatever is no file, a pipe say, might never end.
    if (item.isLocalFile() && !QFileInfo(path).isFile())
        return std::nullopt;
    QFile file(path);
    if (!file.open(QFile::ReadOnly) || file.size() > largestFile)
        return std::nullopt;
    LoadedPhoto photo{file.read(largestFile + 1), {}};
    if (photo.bytes.isEmpty() || photo.bytes.size() > largestFile || file.error() != QFile::NoError)
        return std::nullopt;
    photo.base64 = QString::fromLatin1(photo.bytes.toBase64());
    return photo;
}

} // namespace

void loadPhoto(const QUrl &item, QObject *context, std::function<void(LoadedPhoto)> loaded)
{
    const QPointer<QObject> alive(context);
    loaderThread().start([item, alive, loaded = std::move(loaded)] {
        auto photo = load(item);
        if (!photo)
            return;
        const auto deliver = [alive, loaded, photo = *std::move(photo)] {
            if (alive)
                loaded(photo);
        };
        QMetaObject::invokeMethod(qApp, deliver, Qt::QueuedConnection);
    });
}
