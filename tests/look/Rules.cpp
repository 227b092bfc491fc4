#include "Rules.h"

#include <QFont>
#include <QJsonArray>

#include <functional>

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

/// The element of a name; null when nothing on show has it.
QQuickItem *elementNamed(const TestScreen &screen, const QString &name)
{
    if (name.isEmpty())
        return screen.window().contentItem();
    const qsizetype slash = name.indexOf(u'/');
    const QQuickItem *const from = elementNamed(screen, name.left(std::max<qsizetype>(slash, 0)));
    return from ? elementBelow(screen, name.mid(slash + 1), from) : nullptr;
}

/// By its name, or as "#rrggbb".
QColor colourOf(const QJsonValue &value)
{
    static const QHash<QString, QColor> names{
        {u"blue"_s, QColor(0x00, 0x7A, 0xFF)},          {u"grey"_s, QColor(0x8E, 0x8E, 0x93)},
        {u"green"_s, QColor(0x34, 0xC7, 0x59)},         {u"red"_s, QColor(0xFF, 0x3B, 0x30)},
        {u"separator"_s, QColor(0x3C, 0x3C, 0x43, 74)},
    };
    const QStringList parts = value.toString().split(u' ');
    QColor colour = names.value(parts[0], QColor(parts[0]));
    if (!colour.isValid())
        qFatal("There is no colour %s", qUtf8Printable(parts[0]));
    if (parts.size() > 1)
        colour.setAlphaF(parts[1].toFloat());
    return colour;
}

/// One element, and where it is drawn.
struct Element {
    const TestScreen &screen;
    const QQuickItem *item;
    QRectF box = drawn(item);

    /// Where another one is drawn; the name of none is the window's.
    QRectF other(const QJsonValue &name) const
    {
        const QQuickItem *const found = elementNamed(screen, name.toString());
        if (!found)
            qFatal("There is no %s", qUtf8Printable(name.toString()));
        return drawn(found);
    }
};

QString differsInside(const Element &element, const QJsonArray &sides)
{
    const QRectF &box = element.box;
    const QRectF around = element.other(sides[0]);
    const auto side = [](const char *what, qreal found, const QJsonValue &wanted) {
        return wanted.isDouble() ? differs(what, found, wanted.toDouble()) : QString();
    };
    return side("left inside", box.left() - around.left(), sides[1]) +
           side("top inside", box.top() - around.top(), sides[2]) +
           side("right inside", around.right() - box.right(), sides[3]) +
           side("bottom inside", around.bottom() - box.bottom(), sides[4]);
}

QString differsText(const Element &element, const QJsonArray &wanted)
{
    const QQuickItem *const label = labelOf(element.item);
    if (!label)
        return u"it has no text"_s;
    const QFont font = label->property("font").value<QFont>();
    const Style style = styleOf(wanted[0].toString());
    return differs("size", font.pixelSize(), style.size) + differs("weight", font.weight(), style.weight) +
           differs("line height", label->property("lineHeight").toReal(), style.line) +
           (font.family() == u"Inter"_s ? QString() : u"the face is "_s + font.family()) +
           differs("colour", label->property("color").value<QColor>(), colourOf(wanted[1]));
}

QString differsShape(const Element &element, const QJsonArray &wanted)
{
    const auto *const background = element.item->property("background").value<QQuickItem *>();
    const QQuickItem *const found = childOf(background ? background : element.item, "ContinuousRectangle");
    if (!found)
        return u"it has no shape"_s;
    const bool outlined = wanted[2] == u"outlined"_s;
    QString all = differs("radius", found->property("radius").toReal(), wanted[0].toDouble()) +
                  differs("fill", found->property("color").value<QColor>(), colourOf(wanted[1])) +
                  differs("outline", found->property("borderWidth").toReal() * 10, outlined ? 10 : 0);
    if (outlined)
        all += differs("outline's colour", found->property("borderColor").value<QColor>(), colourOf(u"grey 0.2"_s));
    return all;
}

QString differsSymbol(const Element &element, const QJsonArray &wanted)
{
    const QQuickItem *const found = childOf(element.item, "Symbol");
    if (!found)
        return u"it has no symbol"_s;
    if (found->property("name").toString() != wanted[0].toString())
        return u"the symbol is "_s + found->property("name").toString();
    return differs("colour", found->property("color").value<QColor>(), colourOf(wanted[1]));
}

QString judge(const Element &element, const QJsonObject &wanted);

/// A part of a form, that far below another element (`to`) and from both sides.
QString judgeFormPart(const Element &it, const QJsonArray &to, const QJsonValue &side, QJsonObject more)
{
    const qreal distance = side.toDouble(24);
    more.insert(u"below"_s, to);
    more.insert(u"left"_s, distance);
    more.insert(u"right"_s, distance);
    more.insert(u"height"_s, 54);
    return judge(it, more);
}

using Rule = std::function<QString(const Element &, const QJsonArray &)>;

/// A rule is called with its list; a single value is a list of one.
const QHash<QString, Rule> rules{
    {u"size"_s,
     [](const Element &it, const QJsonArray &to) {
         return differs("width", it.box.width(), to[0].toDouble()) +
                differs("height", it.box.height(), to[1].toDouble());
     }},
    {u"height"_s,
     [](const Element &it, const QJsonArray &to) { return differs("height", it.box.height(), to[0].toDouble()); }},
    // Distances to the edges of the window.
    {u"left"_s,
     [](const Element &it, const QJsonArray &to) {
         return differsInside(it, {{}, to[0]});
     }},
    {u"top"_s,
     [](const Element &it, const QJsonArray &to) {
         return differsInside(it, {{}, {}, to[0]});
     }},
    {u"right"_s,
     [](const Element &it, const QJsonArray &to) {
         return differsInside(it, {{}, {}, {}, to[0]});
     }},
    {u"bottom"_s,
     [](const Element &it, const QJsonArray &to) {
         return differsInside(it, {{}, {}, {}, {}, to[0]});
     }},
    // Inside another element, that far from its left, top, right and bottom.
    {u"inside"_s, differsInside},
    // Below another element, or to its right, that far.
    {u"below"_s,
     [](const Element &it, const QJsonArray &to) {
         return differs("distance to what is above", it.box.top() - it.other(to[0]).bottom(), to[1].toDouble());
     }},
    {u"after"_s,
     [](const Element &it, const QJsonArray &to) {
         return differs("distance to what is before", it.box.left() - it.other(to[0]).right(), to[1].toDouble());
     }},
    // In the window, from left to right.
    {u"centred"_s,
     [](const Element &it, const QJsonArray &) {
         return differs("middle", it.box.center().x(), it.other({}).center().x());
     }},
    // The middles of both stand at one height.
    {u"level"_s,
     [](const Element &it, const QJsonArray &to) {
         return differs("height of the middle", it.box.center().y(), it.other(to[0]).center().y());
     }},
    // What is above another element is as high as what is below this one, between two heights; half a pixel on either
    // side of the middle.
    {u"balanced"_s,
     [](const Element &it, const QJsonArray &to) {
         const qreal both = it.box.bottom() + it.other(to[0]).top();
         return differs("distance of the middle", (both - to[1].toDouble() - to[2].toDouble()) / 2, 0);
     }},
    // A style by its name, "bold" after it where it is, and a colour.
    {u"text"_s, differsText},
    {u"centredText"_s,
     [](const Element &it, const QJsonArray &) {
         const QQuickItem *const label = labelOf(it.item);
         const bool centred = label && label->property("horizontalAlignment").toInt() == Qt::AlignHCenter;
         return centred ? QString() : u"the text is not centred"_s;
     }},
    // The outline that the element is drawn on: radius, fill, and "outlined" where it is.
    {u"shape"_s, differsShape},
    {u"symbol"_s, differsSymbol},
    // Of a plain rectangle or a line.
    {u"colour"_s,
     [](const Element &it, const QJsonArray &to) {
         return differs("colour", it.item->property("color").value<QColor>(), colourOf(to[0]));
     }},
    {u"field"_s,
     [](const Element &it, const QJsonArray &to) {
         return judgeFormPart(it, to, to[2], {{u"shape"_s, QJsonArray{16, u"white"_s, u"outlined"_s}}});
     }},
    {u"mainButton"_s,
     [](const Element &it, const QJsonArray &to) {
         return judgeFormPart(it, to, to[3],
                              {{u"shape"_s, QJsonArray{20, u"blue"_s}},
                               {u"text"_s, QJsonArray{to[2].toString(u"body bold"_s), u"white"_s}},
                               {u"centredText"_s, true}});
     }},
};

QString judge(const Element &element, const QJsonObject &wanted)
{
    QString all;
    for (auto each = wanted.begin(); each != wanted.end(); ++each) {
        const auto rule = rules.constFind(each.key());
        if (rule == rules.constEnd())
            qFatal("There is no rule %s", qUtf8Printable(each.key()));
        all += (*rule)(element, each->isArray() ? each->toArray() : QJsonArray{*each});
    }
    return all;
}

} // namespace

QStringList differences(const TestScreen &screen, const QJsonObject &table)
{
    QStringList all;
    for (auto each = table.begin(); each != table.end(); ++each) {
        const QQuickItem *const item = elementNamed(screen, each.key());
        if (!item)
            all += u"there is no "_s + each.key();
        else if (const QString what = judge({screen, item}, each->toObject()); !what.isEmpty())
            all += each.key() + u": "_s + what;
    }
    return all;
}
