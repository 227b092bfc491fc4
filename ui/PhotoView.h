#pragma once

#include "TexturedItem.h"

#include <QByteArray>
#include <QUrl>

/// A photo as a round picture, decoded off the main thread at the size it is shown. Draws nothing until it is
/// decoded, and nothing for bytes that do not decode.
class PhotoView : public TexturedItem {
    Q_OBJECT
    QML_ELEMENT
    /// The photo's bytes, as picked.
    Q_PROPERTY(QByteArray photo READ photo WRITE setPhoto NOTIFY photoChanged)
    /// A local file to show instead, read and decoded off the main thread; empty for none.
    Q_PROPERTY(QUrl file READ file WRITE setFile NOTIFY photoChanged)
    /// Fills the whole square instead of the circle in it.
    Q_PROPERTY(bool square MEMBER m_square)
    /// Whether a photo is on show. A new photo leaves the old one on show until it has been decoded.
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
    /// What is being decoded is no longer wanted.
    void voidRequests();
    void show(const QImage &image);

    QByteArray m_photo;
    QUrl m_file;
    bool m_square = false;
    QImage m_image;
    /// The latest: only its result is shown.
    quint64 m_request = 0;
};
