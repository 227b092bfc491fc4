#pragma once

#include "TexturedItem.h"

#include <QColor>

/// One of the bundled symbols, scaled to the item and drawn in one colour.
class Symbol : public TexturedItem {
    Q_OBJECT
    QML_ELEMENT
    /// The symbol's name, for example "shippingbox"; an unknown name draws nothing.
    Q_PROPERTY(QString name READ name WRITE setName NOTIFY nameChanged)
    Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY colorChanged)
public:
    using TexturedItem::TexturedItem;

    QString name() const { return m_name; }
    void setName(const QString &name);
    QColor color() const { return m_color; }
    void setColor(const QColor &color);

Q_SIGNALS:
    void nameChanged();
    void colorChanged();

protected:
    QString textureKey() const override;
    QImage paint(qreal ratio) const override;
    QList<Piece> pieces(QSize pixels, qreal ratio) const override;

private:
    QString m_name;
    QColor m_color = Qt::black;
};
