#include "PhotoFile.h"

#include "Background.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>

namespace {

constexpr qsizetype step = qsizetype(1024) * 1024;

} // namespace

QByteArray readPhotoFile(const QUrl &file)
{
    // The pickers of phones return content URLs, which QFile opens too.
    const QString path = file.isLocalFile() ? file.toLocalFile() : file.toString();
    // Anything but a regular file, a pipe for example, might never end.
    if (path.isEmpty() || (file.isLocalFile() && !QFileInfo(path).isFile()))
        return {};
    // The application may have ended while a network drive answered.
    Background::signOfLife();
    QFile opened(path);
    if (!opened.open(QFile::ReadOnly | QFile::Unbuffered) || opened.size() > largestPhotoFile)
        return {};
    const qint64 size = opened.size();
    QByteArray bytes;
    bytes.reserve(size + 1);
    while (bytes.size() <= largestPhotoFile) {
        Background::signOfLife();
        const qsizetype before = bytes.size();
        // Reads one byte more than the size, to detect the end; some files report no size.
        const qsizetype room = before <= size ? std::min(step, size - before + 1) : step;
        bytes.resize(before + room);
        const qint64 count = opened.read(bytes.data() + before, room);
        bytes.resize(before + std::max<qint64>(count, 0));
        if (count < 0)
            return {};
        if (count == 0)
            return bytes;
    }
    return {};
}
