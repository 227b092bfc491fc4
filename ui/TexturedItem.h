#pragma once

#include <QImage>
#include <QQuickItem>
#include <QtQmlIntegration>

/// An item drawn from one picture that the processor paints once, at the screen's own resolution, and that all items
/// showing the same share. That is smooth on every backend and at every device pixel ratio without multisampling.
class TexturedItem : public QQuickItem {
    Q_OBJECT
    QML_ANONYMOUS
public:
    explicit TexturedItem(QQuickItem *parent = nullptr);

protected:
    /// A text that is the same for two items exactly when `paint` gives them the same picture; empty to draw nothing.
    virtual QString textureKey() const = 0;
    /// The picture, with its device pixel ratio set.
    virtual QImage paint(qreal ratio) const = 0;
    /// Where the pieces of the picture go: each `from` (in pixels of the picture) fills its `to` (in item
    /// coordinates).
    struct Piece {
        QRectF from;
        QRectF to;
    };
    virtual QList<Piece> pieces(QSize pixels, qreal ratio) const = 0;

    /// The look has changed.
    void repaint();

    qreal pixelRatio() const;

    QSGNode *updatePaintNode(QSGNode *old, UpdatePaintNodeData *) override;
    void geometryChange(const QRectF &now, const QRectF &before) override;
    void itemChange(ItemChange change, const ItemChangeData &data) override;
};
