#pragma once

#include "TexturedItem.h"

#include <QByteArray>
#include <QUrl>

/// Shows a photo as a round picture. It decodes the photo on another thread, at the size of the item. Draws nothing
/// until the photo is decoded, or if it cannot be decoded.
class PhotoView : public TexturedItem {
    Q_OBJECT
    QML_ELEMENT
    /// The photo's encoded bytes.
    Q_PROPERTY(QByteArray photo READ photo WRITE setPhoto NOTIFY photoChanged)
    /// A local file to show instead of `photo`, read on another thread; empty for none.
    Q_PROPERTY(QUrl file READ file WRITE setFile NOTIFY photoChanged)
    /// Whether the photo fills a square instead of a circle.
    Q_PROPERTY(bool square MEMBER m_square)
    /// Whether a photo is shown. When `photo` changes, the old photo stays until the new one is decoded.
    Q_PROPERTY(bool decoded READ decoded NOTIFY decodedChanged)
public:
    using TexturedItem::TexturedItem;

    QByteArray photo() const { return m_photo; }
    void setPhoto(const QByteArray &photo);
    QUrl file() const { return m_file; }
    void setFile(const QUrl &file);
    bool decoded() const { return !m_image.isNull(); }

Q_SIGNALS:
    void photoChanged();
    void decodedChanged();

protected:
    QString textureKey() const override;
    QImage paint(qreal ratio) const override;
    QList<Piece> pieces(QSize pixels, qreal ratio) const override;
    void updatePolish() override;
    void componentComplete() override;
    void geometryChange(const QRectF &now, const QRectF &before) override;
    void itemChange(ItemChange change, const ItemChangeData &data) override;

private:
    void cancelRequests();
    void show(const QImage &image);

    QByteArray m_photo;
    QUrl m_file;
    bool m_square = false;
    QImage m_image;
    /// Results of earlier requests are ignored.
    quint64 m_latestRequest = 0;
};
