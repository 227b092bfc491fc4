#include "TexturedItem.h"

#include <QHash>
#include <QMutex>
#include <QQuickWindow>
#include <QSGImageNode>
#include <QSGRectangleNode>
#include <QSGTexture>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

using SharedTexture = std::shared_ptr<QSGTexture>;

/// The textures in use, by window and key. A texture is deleted with the last node that uses it.
class TextureCache {
public:
    template <class Make>
    SharedTexture find(const QQuickWindow *window, const QString &key, Make make)
    {
        const QMutexLocker lock(&m_mutex);
        const std::pair at(window, key);
        if (SharedTexture known = m_textures.value(at).lock())
            return known;
        m_textures.removeIf([](const auto &each) { return each.value().expired(); });
        SharedTexture made(make());
        m_textures[at] = made;
        return made;
    }

private:
    QMutex m_mutex;
    QHash<std::pair<const QQuickWindow *, QString>, std::weak_ptr<QSGTexture>> m_textures;
};

TextureCache &textureCache()
{
    static TextureCache cache;
    return cache;
}

struct PiecesNode final : QSGNode {
    /// Takes over the node of the fill.
    explicit PiecesNode(QSGRectangleNode *itsFill) : fill(itsFill)
    {
        images.setFlag(OwnedByParent, false);
        fill->setFlag(OwnedByParent);
        appendChildNode(fill);
        appendChildNode(&images);
    }

    QString key;
    /// Deleted after the nodes that use it.
    SharedTexture texture;
    QSGNode images;
    QSGRectangleNode *const fill;
};

} // namespace

TexturedItem::TexturedItem(QQuickItem *parent) : QQuickItem(parent) { setFlag(ItemHasContents); }

void TexturedItem::repaint() { update(); }

qreal TexturedItem::pixelRatio() const { return window() ? window()->effectiveDevicePixelRatio() : 1.0; }

QSGNode *TexturedItem::updatePaintNode(QSGNode *old, UpdatePaintNodeData *)
{
    auto *node = static_cast<PiecesNode *>(old);
    const qreal ratio = pixelRatio();
    const QString look = textureKey();
    if (look.isEmpty() || width() <= 0 || height() <= 0) {
        delete node;
        return nullptr;
    }
    if (!node)
        node = new PiecesNode(window()->createRectangleNode());
    const QString key = look + u'@' + QString::number(ratio);
    if (key != node->key) {
        const auto make = [&] {
            const QImage picture = paint(ratio);
            return window()->createTextureFromImage(picture, picture.hasAlphaChannel()
                                                                 ? QQuickWindow::TextureHasAlphaChannel
                                                                 : QQuickWindow::TextureIsOpaque);
        };
        // Delete the nodes that use the old texture before the texture.
        while (QSGNode *child = node->images.firstChild())
            delete child;
        node->texture = textureCache().find(window(), key, make);
        node->texture->setFiltering(QSGTexture::Linear);
        node->key = key;
    }
    const QList<Piece> wanted = pieces(node->texture->textureSize(), ratio);
    while (node->images.childCount() > wanted.size())
        delete node->images.lastChild();
    while (node->images.childCount() < wanted.size()) {
        QSGImageNode *const piece = window()->createImageNode();
        piece->setOwnsTexture(false);
        piece->setTexture(node->texture.get());
        piece->setFiltering(QSGTexture::Linear);
        piece->setFlag(QSGNode::OwnedByParent);
        node->images.appendChildNode(piece);
    }
    for (qsizetype index = 0; index < wanted.size(); ++index) {
        auto *const piece = static_cast<QSGImageNode *>(node->images.childAtIndex(static_cast<int>(index)));
        piece->setSourceRect(wanted[index].from);
        piece->setRect(wanted[index].to);
    }
    const Fill filled = fill();
    node->fill->setRect(filled.to);
    node->fill->setColor(filled.color);
    return node;
}

void TexturedItem::geometryChange(const QRectF &now, const QRectF &before)
{
    QQuickItem::geometryChange(now, before);
    if (now.size() != before.size())
        update();
}

void TexturedItem::itemChange(ItemChange change, const ItemChangeData &data)
{
    if (change == ItemDevicePixelRatioHasChanged || change == ItemSceneChange)
        update();
    QQuickItem::itemChange(change, data);
}
