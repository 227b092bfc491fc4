#include "Artwork.h"

#include <QFile>
#include <QResource>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <future>
#include <map>
#include <mutex>
#include <system_error>

using namespace Qt::StringLiterals;

namespace {

constexpr int largestRatio = 3;

QString fileOf(const QString &name, int ratio)
{
    return u":/marovenda/images/%1%2.pixels"_s.arg(name, ratio > 1 ? u"@%1x"_s.arg(ratio) : QString());
}

/// Decompresses a file of assets/pixels.py.
QImage decoded(const QString &path)
{
    const QResource file(path);
    if (!file.isValid())
        return {};
    auto *const bytes = new QByteArray(file.uncompressedData());
    std::array<quint32, 4> head{};
    std::memcpy(head.data(), bytes->constData(), sizeof head);
    const auto [width, height, transparent, unused] = head;
    return QImage(
        reinterpret_cast<const uchar *>(bytes->constData()) + sizeof head, static_cast<int>(width),
        static_cast<int>(height), static_cast<qsizetype>(width) * 4,
        transparent ? QImage::Format_ARGB32 : QImage::Format_RGB32,
        [](void *its) { delete static_cast<QByteArray *>(its); }, bytes);
}

/// The pictures that are decoded ahead, by file. Never destroyed, since another thread may use it.
struct Ahead {
    std::mutex mutex;
    std::map<QString, std::future<QImage>> pictures;
};

Ahead &ahead()
{
    static auto *const all = new Ahead;
    return *all;
}

} // namespace

void Artwork::decodeAhead(const QString &name, int ratio)
{
    const QString path = fileOf(name, ratio);
    const std::lock_guard lock(ahead().mutex);
    try {
        ahead().pictures[path] = std::async(std::launch::async, decoded, path);
    } catch (const std::system_error &) {
        // The system has no more threads.
    }
}

QImage Artwork::picture(const QString &name, int ratio)
{
    const QString path = fileOf(name, ratio);
    std::future<QImage> found;
    {
        const std::lock_guard lock(ahead().mutex);
        if (auto entry = ahead().pictures.extract(path))
            found = std::move(entry.mapped());
    }
    return found.valid() ? found.get() : decoded(path);
}

int Artwork::ratioFor(qreal ratio) { return std::clamp(static_cast<int>(std::ceil(ratio)), 1, largestRatio); }

void Artwork::setName(const QString &name)
{
    if (name == m_name)
        return;
    m_name = name;
    emit nameChanged();
    repaint();
}

void Artwork::setCropped(bool cropped)
{
    if (cropped == m_cropped)
        return;
    m_cropped = cropped;
    emit croppedChanged();
    repaint();
}

QString Artwork::textureKey() const { return QFile::exists(fileOf(m_name, 1)) ? m_name : QString(); }

QImage Artwork::paint(qreal ratio) const
{
    const int whole = ratioFor(ratio);
    QImage image = picture(m_name, whole);
    image.setDevicePixelRatio(whole);
    return image;
}

QList<TexturedItem::Piece> Artwork::pieces(QSize pixels, qreal) const
{
    const QRectF whole(QPointF(), pixels);
    if (m_cropped) {
        QRectF seen(QPointF(), size().scaled(pixels, Qt::KeepAspectRatio));
        seen.moveCenter(whole.center());
        return {{seen, boundingRect()}};
    }
    QRectF place(QPointF(), QSizeF(pixels).scaled(size(), Qt::KeepAspectRatio));
    place.moveCenter(boundingRect().center());
    return {{whole, place}};
}
