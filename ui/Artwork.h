#pragma once

#include "TexturedItem.h"

/// One of the bundled pictures, scaled to the item. Replaces Image, which loads every image plugin of the system:
/// that takes longer than the rest of the start.
class Artwork : public TexturedItem {
    Q_OBJECT
    QML_ELEMENT
    /// The picture's name, for example "marovenda_logo"; an unknown name draws nothing.
    Q_PROPERTY(QString name MEMBER m_name WRITE setName NOTIFY nameChanged)
    /// Whether the picture fills the item and is cropped, instead of fitting inside it.
    Q_PROPERTY(bool cropped MEMBER m_cropped WRITE setCropped NOTIFY croppedChanged)
public:
    using TexturedItem::TexturedItem;

    /// Returns the bundled picture for a device pixel ratio of 1 to 3, or a null image if there is none.
    static QImage picture(const QString &name, int ratio);

    /// Starts to decode the picture on another thread. The next call of `picture` for it waits for the result and
    /// takes it.
    static void decodeAhead(const QString &name, int ratio);
    /// The ratio of the picture for a screen with this device pixel ratio.
    static int ratioFor(qreal ratio);

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
