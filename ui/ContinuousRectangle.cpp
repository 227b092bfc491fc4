#include "ContinuousRectangle.h"

#include <QPainter>

#include <algorithm>
#include <array>
#include <cmath>

using namespace Qt::StringLiterals;

namespace {

/// The distance from the corner of the rectangle to the start of the curve, in units of the radius.
constexpr qreal reach = 1.528665;

/// The control points of the top left corner, from the top edge to the left edge, in units of the radius.
constexpr std::array<QPointF, 9> corner{{{1.088493, 0},
                                         {0.868407, 0},
                                         {0.631494, 0.074911},
                                         {0.372824, 0.169060},
                                         {0.169060, 0.372824},
                                         {0.074911, 0.631494},
                                         {0, 0.868407},
                                         {0, 1.088493},
                                         {0, reach}}};

} // namespace

qreal ContinuousRectangle::limitedRadius(QSizeF size, qreal radius)
{
    return std::clamp(radius, 0.0, std::max(0.0, std::min(size.width(), size.height()) / 2 / reach));
}

QPainterPath ContinuousRectangle::outline(const QRectF &rect, qreal radius)
{
    const qreal r = limitedRadius(rect.size(), radius);
    QPainterPath path;
    // Mirrors the top left corner. Every second corner runs backwards, so that the four follow one another around the
    // shape.
    const auto addCorner = [&](QPointF at, qreal right, qreal down, bool forward) {
        const auto place = [&](QPointF unit) { return at + QPointF(unit.x() * r * right, unit.y() * r * down); };
        std::array<QPointF, 10> points;
        points[0] = place({reach, 0});
        std::transform(corner.begin(), corner.end(), points.begin() + 1, place);
        if (!forward)
            std::reverse(points.begin(), points.end());
        if (path.elementCount() == 0)
            path.moveTo(points[0]);
        else
            path.lineTo(points[0]);
        for (std::size_t i = 1; i < points.size(); i += 3)
            path.cubicTo(points[i], points[i + 1], points[i + 2]);
    };
    addCorner(rect.topLeft(), 1, 1, true);
    addCorner(rect.bottomLeft(), 1, -1, false);
    addCorner(rect.bottomRight(), -1, -1, true);
    addCorner(rect.topRight(), -1, 1, false);
    path.closeSubpath();
    return path;
}

qreal ContinuousRectangle::cornerReach() const
{
    const qreal r = limitedRadius(size(), m_radius);
    return std::min(std::ceil(reach * r + m_borderWidth), std::floor(std::min(width(), height()) / 2));
}

QString ContinuousRectangle::textureKey() const
{
    const qreal r = limitedRadius(size(), m_radius);
    return u"corner:%1:%2:%3:%4:%5"_s.arg(r)
        .arg(cornerReach())
        .arg(m_color.name(QColor::HexArgb), m_borderColor.name(QColor::HexArgb))
        .arg(m_borderWidth);
}

QImage ContinuousRectangle::paint(qreal ratio) const
{
    // Four corners around a middle of two points, which `pieces` stretches.
    const qreal side = 2 * cornerReach() + 2;
    const qreal margin = outlineOutside();
    const int pixels = static_cast<int>(std::ceil((side + 2 * margin) * ratio));
    QImage image(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(ratio);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF shape(margin, margin, side, side);
    const QPainterPath path = outline(shape, limitedRadius(size(), m_radius));
    painter.fillPath(path, m_color);
    if (m_borderWidth > 0) {
        QPen pen(m_borderColor, m_borderWidth, Qt::SolidLine, Qt::FlatCap, Qt::MiterJoin);
        pen.setMiterLimit(10);
        painter.strokePath(path, pen);
    }
    return image;
}

QList<TexturedItem::Piece> ContinuousRectangle::pieces(QSize pixels, qreal ratio) const
{
    const qreal margin = outlineOutside();
    const qreal edge = cornerReach() + margin;
    const qreal full = pixels.width();
    const std::array<qreal, 4> from{0, edge * ratio, full - edge * ratio, full};
    const std::array<qreal, 4> across{-margin, edge - margin, width() + margin - edge, width() + margin};
    const std::array<qreal, 4> down{-margin, edge - margin, height() + margin - edge, height() + margin};
    // Inset the middle, so that filtering does not mix the corners into it.
    const auto source = [&](std::size_t i) {
        const qreal inset = i == 1 ? std::min(0.5, (from[2] - from[1]) / 4) : 0;
        return std::pair(from[i] + inset, from[i + 1] - inset);
    };
    QList<Piece> all;
    all.reserve(8);
    for (std::size_t y = 0; y < 3; ++y) {
        for (std::size_t x = 0; x < 3; ++x) {
            const QRectF to(QPointF(across[x], down[y]), QPointF(across[x + 1], down[y + 1]));
            const bool isMiddle = x == 1 && y == 1;
            if (isMiddle || to.width() <= 0 || to.height() <= 0)
                continue;
            const auto [left, right] = source(x);
            const auto [top, bottom] = source(y);
            all.append({QRectF(QPointF(left, top), QPointF(right, bottom)), to});
        }
    }
    return all;
}

TexturedItem::Fill ContinuousRectangle::fill() const
{
    if (m_color.alpha() == 0)
        return {};
    const qreal edge = cornerReach();
    return {boundingRect().adjusted(edge, edge, -edge, -edge), m_color};
}
