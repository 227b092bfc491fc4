#include "PhotoLoader.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QPointer>
#include <QThreadPool>

#include <algorithm>
#include <optional>

namespace {

constexpr qint64 largestFile = qint64(64) * 1024 * 1024;

QThreadPool &loaderThread()
{
    static auto *const pool = [] {
        auto *made = new QThreadPool(qApp);
        made->setMaxThreadCount(1);
        // Nothing may come once the view models' queued jobs have been dropped, which happens after this.
        qAddPostRoutine([] {
            loaderThread().clear();
            loaderThread().waitForDone();
        });
        return made;
    }();
    return *pool;
}

/// In steps, since the text itself takes 171 MiB for the largest file.
QString base64Of(const QByteArray &bytes)
{
    // A multiple of 3, so that no step ends with padding but the last.
    constexpr qsizetype step = qsizetype(3) * 65536;
    QString text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (qsizetype at = 0; at < bytes.size(); at += step) {
        const qsizetype length = std::min(step, bytes.size() - at);
        text += QLatin1String(QByteArray::fromRawData(bytes.constData() + at, length).toBase64());
    }
    return text;
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
    photo.base64 = base64Of(photo.bytes);
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
