#include "PhotoView.h"

#include "PhotoDecoder.h"

#include <QPointer>
#include <QThreadPool>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace {

/// One thread: two photos decoded at once would take twice the memory.
QThreadPool &decoderThread()
{
    static auto *const pool = [] {
        auto *made = new QThreadPool(qApp);
        made->setMaxThreadCount(1);
        // Decoding needs the application to the end.
        qAddPostRoutine([] {
            decoderThread().clear();
            decoderThread().waitForDone();
        });
        return made;
    }();
    return *pool;
}

} // namespace

void PhotoView::setPhoto(const QByteArray &photo)
{
    if (photo.isSharedWith(m_photo) || photo == m_photo)
        return;
    m_photo = photo;
    voidRequests();
    emit photoChanged();
    polish();
}

void PhotoView::setFile(const QUrl &file)
{
    if (file == m_file)
        return;
    m_file = file;
    voidRequests();
    emit photoChanged();
    // Another file's picture would be a wrong one.
    show({});
    polish();
}

void PhotoView::voidRequests() { ++m_request; }

void PhotoView::updatePolish()
{
    voidRequests();
    const quint64 request = m_request;
    const int diameter = static_cast<int>(std::ceil(std::min(width(), height()) * pixelRatio()));
    if ((m_photo.isEmpty() && m_file.isEmpty()) || diameter <= 0) {
        show({});
        return;
    }
    const QPointer<PhotoView> self(this);
    const auto shape = m_square ? PhotoShape::Square : PhotoShape::Circle;
    decoderThread().start([self, request, photo = m_photo, file = m_file, diameter, shape] {
        if (!self)
            return;
        const QImage image = file.isEmpty() ? decodePhoto(photo, diameter, shape)
                                            : decodePhotoFile(file.toLocalFile(), diameter, shape);
        QMetaObject::invokeMethod(
            qApp,
            [self, request, image] {
                if (self && self->m_request == request)
                    self->show(image);
            },
            Qt::QueuedConnection);
    });
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
