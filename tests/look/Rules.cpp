#include "Rules.h"

#include <QFont>

using namespace Qt::StringLiterals;

namespace {

// Half a physical pixel.
constexpr qreal tolerance = 0.51;

QString differs(const char *what, qreal found, qreal wanted)
{
    if (qAbs(found - wanted) <= tolerance)
        return {};
    return u"%1 is %2, not %3"_s.arg(QLatin1String(what)).arg(found).arg(wanted);
}

QString differs(const char *what, const QColor &found, const QColor &wanted)
{
    for (const auto part : {&QColor::red, &QColor::green, &QColor::blue, &QColor::alpha}) {
        if (qAbs((found.*part)() - (wanted.*part)()) > 1)
            return u"%1 is %2, not %3"_s.arg(QLatin1String(what), found.name(QColor::HexArgb),
                                             wanted.name(QColor::HexArgb));
    }
    return {};
}

bool isText(const QQuickItem *item) { return item->inherits("QQuickText"); }

/// Where something is drawn: without the padding of a text.
QRectF drawn(const QQuickItem *item)
{
    QRectF box = TestScreen::box(item);
    if (isText(item)) {
        box.adjust(item->property("leftPadding").toReal(), item->property("topPadding").toReal(),
                   -item->property("rightPadding").toReal(), -item->property("bottomPadding").toReal());
    }
    return box;
}

/// The text of a button, or the text itself.
const QQuickItem *labelOf(const QQuickItem *item)
{
    if (isText(item))
        return item;
    const auto *const content = item->property("contentItem").value<QQuickItem *>();
    return content && isText(content) ? content : nullptr;
}

const QQuickItem *childOf(const QQuickItem *item, const char *className)
{
    if (item->inherits(className))
        return item;
    const auto children = item->childItems();
    for (const QQuickItem *child : children) {
        if (const QQuickItem *const found = child->isVisible() ? childOf(child, className) : nullptr)
            return found;
    }
    return nullptr;
}

struct Style {
    int size;
    int line;
    int weight;
};

Style styleOf(const QString &name)
{
    static const QHash<QString, Style> styles{
        {u"largeTitle"_s, {34, 41, 400}}, {u"title"_s, {28, 34, 400}},   {u"title2"_s, {22, 28, 400}},
        {u"headline"_s, {17, 22, 600}},   {u"body"_s, {17, 22, 400}},    {u"subheadline"_s, {15, 20, 400}},
        {u"footnote"_s, {13, 18, 400}},   {u"caption"_s, {12, 16, 400}},
    };
    const bool bold = name.endsWith(u" bold"_s);
    Style style = styles.value(bold ? name.chopped(5) : name);
    if (bold)
        style.weight = 700;
    return style;
}

Rule towards(const QString &other, const std::function<QString(const QRectF &, const QRectF &)> &judge)
{
    return [=](const TestScreen &screen, const QQuickItem *item) {
        const QQuickItem *const found = elementNamed(screen, other);
        return found ? judge(drawn(item), drawn(found)) : u"there is no "_s + other;
    };
}

QQuickItem *elementBelow(const TestScreen &screen, const QString &name, const QQuickItem *from)
{
    for (QQuickItem *item : screen.all(name, from)) {
        if (item->isVisible())
            return item;
    }
    const auto children = from->childItems();
    for (QQuickItem *child : children) {
        if (!child->isVisible())
            continue;
        if (isText(child) && child->property("text").toString() == name)
            return child;
        if (QQuickItem *const found = elementBelow(screen, name, child))
            return found;
    }
    return nullptr;
}

} // namespace

QQuickItem *elementNamed(const TestScreen &screen, const QString &name)
{
    if (name.isEmpty())
        return screen.window().contentItem();
    const qsizetype slash = name.indexOf(u'/');
    const QQuickItem *const from = elementNamed(screen, name.left(std::max<qsizetype>(slash, 0)));
    return from ? elementBelow(screen, name.mid(slash + 1), from) : nullptr;
}

namespace look {

Rule size(qreal width, qreal height)
{
    return [=](const TestScreen &, const QQuickItem *item) {
        return differs("width", drawn(item).width(), width) + differs("height", drawn(item).height(), height);
    };
}

Rule height(qreal height)
{
    return
        [=](const TestScreen &, const QQuickItem *item) { return differs("height", drawn(item).height(), height); };
}

Rule left(qreal distance) { return inside({}, distance, -1, -1, -1); }
Rule top(qreal distance) { return inside({}, -1, distance, -1, -1); }
Rule right(qreal distance) { return inside({}, -1, -1, distance, -1); }
Rule bottom(qreal distance) { return inside({}, -1, -1, -1, distance); }

Rule below(const QString &other, qreal distance)
{
    return towards(other, [=](const QRectF &box, const QRectF &above) {
        return differs("distance to what is above", box.top() - above.bottom(), distance);
    });
}

Rule after(const QString &other, qreal distance)
{
    return towards(other, [=](const QRectF &box, const QRectF &before) {
        return differs("distance to what is before", box.left() - before.right(), distance);
    });
}

Rule centred()
{
    return towards({}, [](const QRectF &box, const QRectF &window) {
        return differs("middle", box.center().x(), window.center().x());
    });
}

Rule level(const QString &other)
{
    return towards(other, [](const QRectF &box, const QRectF &beside) {
        return differs("height of the middle", box.center().y(), beside.center().y());
    });
}

Rule balancedFrom(const QString &first, qreal from, qreal to)
{
    return towards(first, [=](const QRectF &last, const QRectF &begin) {
        // Half a pixel on either side of the middle.
        return differs("distance of the middle", (last.bottom() + begin.top() - from - to) / 2, 0);
    });
}

Rule inside(const QString &other, qreal left, qreal top, qreal right, qreal bottom)
{
    return towards(other, [=](const QRectF &box, const QRectF &around) {
        const auto side = [](const char *what, qreal found, qreal wanted) {
            return wanted < 0 ? QString() : differs(what, found, wanted);
        };
        return side("left inside", box.left() - around.left(), left) +
               side("top inside", box.top() - around.top(), top) +
               side("right inside", around.right() - box.right(), right) +
               side("bottom inside", around.bottom() - box.bottom(), bottom);
    });
}

Rule text(const QString &style, const QColor &colour)
{
    return [=](const TestScreen &, const QQuickItem *item) {
        const QQuickItem *const label = labelOf(item);
        if (!label)
            return u"it has no text"_s;
        const QFont font = label->property("font").value<QFont>();
        const Style wanted = styleOf(style);
        return differs("size", font.pixelSize(), wanted.size) + differs("weight", font.weight(), wanted.weight) +
               differs("line height", label->property("lineHeight").toReal(), wanted.line) +
               (font.family() == u"Inter"_s ? QString() : u"the face is "_s + font.family()) +
               differs("colour", label->property("color").value<QColor>(), colour);
    };
}

Rule centredText()
{
    return [](const TestScreen &, const QQuickItem *item) {
        const QQuickItem *const label = labelOf(item);
        const bool centred = label && label->property("horizontalAlignment").toInt() == Qt::AlignHCenter;
        return centred ? QString() : u"the text is not centred"_s;
    };
}

Rule shape(qreal radius, const QColor &fill, bool outlined)
{
    return [=](const TestScreen &, const QQuickItem *item) {
        const auto *const background = item->property("background").value<QQuickItem *>();
        const QQuickItem *const found = childOf(background ? background : item, "ContinuousRectangle");
        if (!found)
            return u"it has no shape"_s;
        QString all = differs("radius", found->property("radius").toReal(), radius) +
                      differs("fill", found->property("color").value<QColor>(), fill) +
                      differs("outline", found->property("borderWidth").toReal() * 10, outlined ? 10 : 0);
        if (outlined)
            all += differs("outline's colour", found->property("borderColor").value<QColor>(), faint(grey, 0.2));
        return all;
    };
}

Rule symbol(const QString &name, const QColor &colour)
{
    return [=](const TestScreen &, const QQuickItem *item) {
        const QQuickItem *const found = childOf(item, "Symbol");
        if (!found)
            return u"it has no symbol"_s;
        if (found->property("name").toString() != name)
            return u"the symbol is "_s + found->property("name").toString();
        return differs("colour", found->property("color").value<QColor>(), colour);
    };
}

Rule colour(const QColor &colour)
{
    return [=](const TestScreen &, const QQuickItem *item) {
        return differs("colour", item->property("color").value<QColor>(), colour);
    };
}

} // namespace look
