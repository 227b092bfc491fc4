#include "PhotoLoader.h"

#include "Background.h"
#include "PhotoFile.h"

#include <QPointer>

#include <algorithm>
#include <utility>

namespace {

/// Starts every read at once, since an earlier file may be on a network drive that is gone.
Background &loads()
{
    static auto *const made = new Background(8, std::chrono::milliseconds(0));
    return *made;
}

/// Encodes in steps: the text alone takes 171 MiB for the largest file.
QString base64Of(const QByteArray &bytes)
{
    // A multiple of 3, so that only the last step ends with padding.
    constexpr qsizetype step = qsizetype(3) * 65536;
    QString text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (qsizetype at = 0; at < bytes.size(); at += step) {
        const qsizetype length = std::min(step, bytes.size() - at);
        text += QLatin1String(QByteArray::fromRawData(bytes.constData() + at, length).toBase64());
    }
    return text;
}

} // namespace

void loadPhoto(const QUrl &item, QObject *context, std::function<void(LoadedPhoto)> loaded)
{
    loads().start(
        [item] {
            const QByteArray bytes = readPhotoFile(item);
            return LoadedPhoto{bytes, base64Of(bytes)};
        },
        [alive = QPointer<QObject>(context)] { return !alive.isNull(); },
        [loaded = std::move(loaded)](const LoadedPhoto &photo) {
            if (!photo.bytes.isEmpty())
                loaded(photo);
        });
}
