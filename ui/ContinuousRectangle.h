#pragma once

#include "TexturedItem.h"

#include <QColor>
#include <QPainterPath>

#include <cmath>

/// A rectangle whose corners bend smoothly: the curvature grows from the edge into the corner instead of jumping. The
/// outline, if any, is centred on the shape's edge, half of it outside.
class ContinuousRectangle : public TexturedItem {
    Q_OBJECT
    QML_ELEMENT
    /// The corner radius; limited so that two corners fit on the shorter side.
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

    /// The shape's outline in a rectangle, for a corner radius before limiting.
    static QPainterPath outline(const QRectF &rect, qreal radius);
    /// The radius that a shape of this size really gets.
    static qreal limitedRadius(QSizeF size, qreal radius);

Q_SIGNALS:
    void lookChanged();

protected:
    QString textureKey() const override;
    QImage paint(qreal ratio) const override;
    QList<Piece> pieces(QSize pixels, qreal ratio) const override;

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
    /// How far the corner reaches along an edge, in whole points so that pieces meet on pixels.
    qreal cornerReach() const;
    /// How far the outline reaches beyond the item.
    qreal overhang() const { return std::ceil(m_borderWidth / 2); }

    qreal m_radius = 0;
    QColor m_color = Qt::white;
    QColor m_borderColor = Qt::transparent;
    qreal m_borderWidth = 0;
};
