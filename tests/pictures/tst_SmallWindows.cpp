#include "MarovendaTest.h"
#include "Scenes.h"
#include "ServiceTest.h"

#include <QTest>

using namespace Qt::StringLiterals;

/// Every screen in the smallest windows that a phone's shell gives: on its side, and half of that under a keyboard.
class SmallWindowsTest : public ServiceTest {
    Q_OBJECT
private Q_SLOTS:
    void everythingCanBeSeen_data();
    void everythingCanBeSeen();
    void focusedFieldIsSeenWhole_data() { everythingCanBeSeen_data(); }
    void focusedFieldIsSeenWhole();
};

namespace {

/// The part of the window in which an item can be seen.
QRectF viewOf(const QQuickItem *item, QSize window)
{
    QRectF view(QPointF(), window);
    for (const QQuickItem *each = item->parentItem(); each; each = each->parentItem()) {
        if (each->clip() || each->inherits("QQuickFlickable"))
            view &= TestScreen::box(each);
    }
    return view;
}

bool isInside(const QRectF &box, const QRectF &view) { return view.adjusted(-0.5, -0.5, 0.5, 0.5).contains(box); }

/// What is drawn or pressed: texts, pictures, fields and buttons.
QList<QQuickItem *> parts(QQuickItem *from)
{
    QList<QQuickItem *> all;
    if (!from->isVisible() || qFuzzyIsNull(from->opacity()))
        return all;
    const bool isText = from->inherits("QQuickText") && !from->property("text").toString().isEmpty();
    const bool isPart = isText || from->inherits("QQuickControl") || from->inherits("QQuickTextInput") ||
                        from->inherits("Artwork") || from->inherits("Symbol");
    if (isPart)
        all.append(from);
    // What a field holds scrolls within it.
    if (from->inherits("QQuickTextInput"))
        return all;
    for (QQuickItem *const child : from->childItems())
        all += parts(child);
    return all;
}

} // namespace

void SmallWindowsTest::everythingCanBeSeen_data()
{
    const auto row = columns<QByteArray, QSize>("scene", "size");
    for (const QSize size : {QSize(240, 160), QSize(720, 180)}) {
        for (const Scene &scene : scenes())
            row(scene.name + "-" + QByteArray::number(size.width()), scene.name, size);
    }
}

void SmallWindowsTest::everythingCanBeSeen()
{
    QFETCH(QByteArray, scene);
    QFETCH(QSize, size);
    const auto screen = staged(scene, server, size);
    QVERIFY(screen);
    QStringList unseen;
    for (QQuickItem *const part : parts(screen->root())) {
        screen->scrollTo(part);
        for (QQuickItem *area = part->parentItem(); area; area = area->parentItem()) {
            if (area->inherits("QQuickFlickable"))
                QMetaObject::invokeMethod(area, "returnToBounds");
        }
        const QRectF box = TestScreen::box(part);
        if (!isInside(box, viewOf(part, size)) && box.height() <= viewOf(part, size).height())
            unseen.append(QString::fromLatin1(part->metaObject()->className()) + u' ' +
                          part->property("text").toString());
    }
    QVERIFY2(unseen.isEmpty(), qUtf8Printable(unseen.join(u" | "_s)));
}

void SmallWindowsTest::focusedFieldIsSeenWhole()
{
    QFETCH(QByteArray, scene);
    QFETCH(QSize, size);
    const auto screen = staged(scene, server, size);
    QVERIFY(screen);
    for (QQuickItem *const field : parts(screen->root())) {
        if (!field->inherits("QQuickTextInput") || !field->isEnabled())
            continue;
        field->forceActiveFocus(Qt::TabFocusReason);
        screen->settle();
        QVERIFY2(isInside(TestScreen::box(field), viewOf(field, size)), qUtf8Printable(field->objectName()));
    }
}

MAROVENDA_TEST(SmallWindowsTest)
#include "tst_SmallWindows.moc"
