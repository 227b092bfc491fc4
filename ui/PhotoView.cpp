#include "PhotoView.h"

#include "Background.h"
#include "PhotoDecoder.h"
#include "PhotoFile.h"

#include <QList>
#include <QPointer>

#define XXH_INLINE_ALL
#include <xxhash.h>

#include <algorithm>
#include <cmath>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

/// Reads files one at a time, so that few are in memory. Does not wait for a file that stalls.
Background &fileReader()
{
    static auto *const made = new Background(16, std::chrono::milliseconds(500));
    return *made;
}

/// Decodes photos that are already in memory, without waiting for files.
Background &memoryReader()
{
    static auto *const made = new Background(1, std::chrono::milliseconds(500));
    return *made;
}

/// The pictures that were decoded last, so that a screen that opens again need not decode a large photo again.
class DecodedPhotos {
public:
    /// Returns the picture of a photo; decodes it if it is not among the last ones. Call it with a Background::Turn.
    QImage find(const QByteArray &photo, int diameter, PhotoShape shape)
    {
        const Key key{XXH3_128bits(photo.constData(), static_cast<size_t>(photo.size())), diameter, shape};
        auto known = std::find_if(m_last.begin(), m_last.end(), [&](const auto &each) { return each.first == key; });
        if (known == m_last.end()) {
            QImage decoded = decodePhoto(photo, diameter, shape);
            // There may be more memory, or more time, at the next attempt.
            if (decoded.isNull())
                return decoded;
            if (m_last.size() == mostKept)
                m_last.removeLast();
            m_last.append({key, decoded});
            known = m_last.end() - 1;
        }
        std::rotate(m_last.begin(), known, known + 1);
        return m_last.first().second;
    }

private:
    /// The profile's and the dashboard's, of the present photo and of a former one.
    static constexpr qsizetype mostKept = 4;

    struct Key {
        XXH128_hash_t photo;
        int diameter;
        PhotoShape shape;
        bool operator==(const Key &other) const
        {
            return XXH128_isEqual(photo, other.photo) && diameter == other.diameter && shape == other.shape;
        }
    };

    QList<std::pair<Key, QImage>> m_last;
};

DecodedPhotos &decodedPhotos()
{
    static auto *const made = new DecodedPhotos;
    return *made;
}

} // namespace

void PhotoView::setPhoto(const QByteArray &photo)
{
    if (photo.isSharedWith(m_photo) || photo == m_photo)
        return;
    m_photo = photo;
    cancelRequests();
    emit photoChanged();
    polish();
}

void PhotoView::setFile(const QUrl &file)
{
    if (file == m_file)
        return;
    m_file = file;
    cancelRequests();
    emit photoChanged();
    // The old picture belongs to another file.
    show({});
    polish();
}

void PhotoView::cancelRequests() { ++m_latestRequest; }

void PhotoView::updatePolish()
{
    cancelRequests();
    const quint64 request = m_latestRequest;
    const int diameter = static_cast<int>(std::ceil(std::min(width(), height()) * pixelRatio()));
    if ((m_photo.isEmpty() && m_file.isEmpty()) || diameter <= 0) {
        show({});
        return;
    }
    const QPointer<PhotoView> self(this);
    const auto shape = m_square ? PhotoShape::Square : PhotoShape::Circle;
    auto &background = m_file.isEmpty() ? memoryReader() : fileReader();
    background.start(
        [photo = m_photo, file = m_file, diameter, shape] {
            const QByteArray bytes = file.isEmpty() ? QByteArray() : readPhotoFile(file);
            // Decode one photo at a time: each may need much memory.
            const Background::Turn turn;
            return file.isEmpty() ? decodedPhotos().find(photo, diameter, shape)
                                  : decodePhoto(bytes, diameter, shape);
        },
        [self, request] { return self && self->m_latestRequest == request; },
        [self](const QImage &image) { self->show(image); });
}

void PhotoView::show(const QImage &image)
{
    const bool before = decoded();
    m_image = image;
    if (decoded() != before)
        emit decodedChanged();
    repaint();
}

QString PhotoView::textureKey() const { return m_image.isNull() ? QString() : u"photo:%1"_s.arg(m_image.cacheKey()); }

QImage PhotoView::paint(qreal) const { return m_image; }

QList<TexturedItem::Piece> PhotoView::pieces(QSize pixels, qreal) const
{
    return {{QRectF(QPointF(), pixels), boundingRect()}};
}

void PhotoView::componentComplete()
{
    TexturedItem::componentComplete();
    polish();
}

void PhotoView::geometryChange(const QRectF &now, const QRectF &before)
{
    TexturedItem::geometryChange(now, before);
    if (now.size() != before.size())
        polish();
}

void PhotoView::itemChange(ItemChange change, const ItemChangeData &data)
{
    if (change == ItemDevicePixelRatioHasChanged)
        polish();
    TexturedItem::itemChange(change, data);
}
