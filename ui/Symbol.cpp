#include "Symbol.h"

#include <QFile>
#include <QPainter>
#include <QSvgRenderer>

#include <cmath>

using namespace Qt::StringLiterals;

namespace {

QString fileOf(const QString &name) { return u":/marovenda/symbols/%1.svg"_s.arg(name); }

} // namespace

void Symbol::setName(const QString &name)
{
    if (name == m_name)
        return;
    m_name = name;
    emit nameChanged();
    repaint();
}

void Symbol::setColor(const QColor &color)
{
    if (color == m_color)
        return;
    m_color = color;
    emit colorChanged();
    repaint();
}

QString Symbol::textureKey() const
{
    if (!QFile::exists(fileOf(m_name)))
        return {};
    return u"symbol:%1:%2:%3x%4"_s.arg(m_name, m_color.name(QColor::HexArgb)).arg(width()).arg(height());
}

QImage Symbol::paint(qreal ratio) const
{
    QImage image((size() * ratio).toSize(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QSvgRenderer renderer(fileOf(m_name));
    renderer.setAspectRatioMode(Qt::KeepAspectRatio);
    QPainter painter(&image);
    renderer.render(&painter, image.rect());
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(image.rect(), m_color);
    painter.end();
    image.setDevicePixelRatio(ratio);
    return image;
}

QList<TexturedItem::Piece> Symbol::pieces(QSize pixels, qreal) const
{
    return {{QRectF(QPointF(), pixels), boundingRect()}};
}
