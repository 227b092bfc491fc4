#pragma once

#include "TexturedItem.h"

/// One of the product's pictures, as wide or as high as the item. Not by the platform's Image, which has every
/// decoder of the system loaded first: that takes longer than all else until the window shows.
class Artwork : public TexturedItem {
    Q_OBJECT
    QML_ELEMENT
    /// The picture's name, "marovenda_logo" say; an unknown one draws nothing.
    Q_PROPERTY(QString name MEMBER m_name WRITE setName NOTIFY nameChanged)
    /// Whether it fills the item, its edges cut off, instead of being whole within it.
    Q_PROPERTY(bool cropped MEMBER m_cropped WRITE setCropped NOTIFY croppedChanged)
public:
    using TexturedItem::TexturedItem;

    /// A picture as it is bundled, for a device pixel ratio of 1 to 3; null when there is none.
    static QImage picture(const QString &name, int ratio);

    void setName(const QString &name);
    void setCropped(bool cropped);

Q_SIGNALS:
    void nameChanged();
    void croppedChanged();

protected:
    QString textureKey() const override;
    QImage paint(qreal ratio) const override;
    QList<Piece> pieces(QSize pixels, qreal ratio) const override;

private:
    QString m_name;
    bool m_cropped = false;
};
