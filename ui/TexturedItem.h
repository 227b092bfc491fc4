#pragma once

#include <QColor>
#include <QImage>
#include <QQuickItem>
#include <QtQmlIntegration>

/// An item that draws pieces of a picture. The picture is painted once, in software and at the screen's resolution,
/// and shared by all items with the same key. It is smooth on every backend and at every device pixel ratio without
/// multisampling.
class TexturedItem : public QQuickItem {
    Q_OBJECT
    QML_ANONYMOUS
public:
    explicit TexturedItem(QQuickItem *parent = nullptr);

protected:
    /// Returns a key that two items share exactly if `paint` returns the same picture for them; empty to draw
    /// nothing.
    virtual QString textureKey() const = 0;
    /// Returns the picture with its device pixel ratio set.
    virtual QImage paint(qreal ratio) const = 0;
    /// A part of the picture, in its pixels, and the rectangle that it fills, in item coordinates.
    struct Piece {
        QRectF from;
        QRectF to;
    };
    virtual QList<Piece> pieces(QSize pixels, qreal ratio) const = 0;
    /// A rectangle of one colour between the pieces, in item coordinates. Software renderers take several times as
    /// long to stretch a piece.
    struct Fill {
        QRectF to;
        QColor color = Qt::transparent;
    };
    virtual Fill fill() const { return {}; }

    /// Call this when `textureKey` or `pieces` has changed.
    void repaint();

    qreal pixelRatio() const;

    QSGNode *updatePaintNode(QSGNode *old, UpdatePaintNodeData *) override;
    void geometryChange(const QRectF &now, const QRectF &before) override;
    void itemChange(ItemChange change, const ItemChangeData &data) override;
};
