#pragma once

#include "TexturedItem.h"

#include <QColor>
#include <QPainterPath>

#include <cmath>

/// A rectangle with continuous corners: the curvature grows steadily from the edge into the corner. The outline, if
/// any, is centred on the edge, so half of it lies outside the item.
class ContinuousRectangle : public TexturedItem {
    Q_OBJECT
    QML_ELEMENT
    /// The corner radius, limited so that two corners fit on the shorter side.
    Q_PROPERTY(qreal radius MEMBER m_radius WRITE setRadius NOTIFY lookChanged)
    Q_PROPERTY(QColor color MEMBER m_color WRITE setColor NOTIFY lookChanged)
    Q_PROPERTY(QColor borderColor MEMBER m_borderColor WRITE setBorderColor NOTIFY lookChanged)
    /// 0 for no outline.
    Q_PROPERTY(qreal borderWidth MEMBER m_borderWidth WRITE setBorderWidth NOTIFY lookChanged)
public:
    using TexturedItem::TexturedItem;

    void setRadius(qreal radius) { set(m_radius, radius); }
    void setColor(const QColor &color) { set(m_color, color); }
    void setBorderColor(const QColor &color) { set(m_borderColor, color); }
    void setBorderWidth(qreal width) { set(m_borderWidth, width); }

    /// Returns the shape's outline in `rect`; limits the radius itself.
    static QPainterPath outline(const QRectF &rect, qreal radius);
    /// Returns the radius that a shape of this size gets.
    static qreal limitedRadius(QSizeF size, qreal radius);

Q_SIGNALS:
    void lookChanged();

protected:
    QString textureKey() const override;
    QImage paint(qreal ratio) const override;
    QList<Piece> pieces(QSize pixels, qreal ratio) const override;
    Fill fill() const override;

private:
    template <class T>
    void set(T &field, const T &value)
    {
        if (field == value)
            return;
        field = value;
        emit lookChanged();
        repaint();
    }
    /// How far the corner reaches along an edge; a whole number, so that the pieces meet on pixel boundaries.
    qreal cornerReach() const;
    qreal outlineOutside() const { return std::ceil(m_borderWidth / 2); }

    qreal m_radius = 0;
    QColor m_color = Qt::white;
    QColor m_borderColor = Qt::transparent;
    qreal m_borderWidth = 0;
};
