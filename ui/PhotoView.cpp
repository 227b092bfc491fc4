#include "PhotoView.h"

#include "Background.h"
#include "PhotoDecoder.h"
#include "PhotoFile.h"

#include <QPointer>

#include <algorithm>
#include <cmath>

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
            const QByteArray bytes = file.isEmpty() ? photo : readPhotoFile(file);
            // Decode one photo at a time: each may need much memory.
            const Background::Turn turn;
            return decodePhoto(bytes, diameter, shape);
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
