#include "MarovendaTest.h"
#include "TestScreen.h"

#include <QQmlComponent>
#include <QTest>

#include <cmath>

using namespace Qt::StringLiterals;

class NavigationContainerTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void rootAppearsOnceAndCannotBeLeft();
    void pushSlidesInFromTheRightOverTheDimmedScreen();
    void everyWayBackIsOnePop_data();
    void everyWayBackIsOnePop();
    void screenBelowAppearsWhenThePopBegins();
    void swipeFollowsTheFingerAndPopsPastHalf();
    void swipeThatStopsShortComesBackWhateverTheKeys();
    void repeatedKeyIsNoPop();
    void flickPops();
    void swipeElsewhereOrOverACoveredScreenIsNoPop();
    void pushCompletesThePopBeforeIt();
    void resizedWindowResizesEveryScreen();
    void titleComesInTheBarOnceTheLargeOneIsGone();

private:
    static QByteArray navigation()
    {
        return R"qml(NavigationContainer {
            id: navigation
            property int appearances: 0
            root: Component {
                AppScreen {
                    id: home
                    objectName: "home"
                    barHidden: true
                    onAppeared: ++navigation.appearances
                    PrimaryButton { objectName: "open"; width: 200; text: "Abrir"; onClicked: home.push(next) }
                }
            }
            property Component next: Component {
                AppScreen {
                    objectName: "next"
                    title: "Mis Paquetes"
                    scrolled: area.contentY
                    Flickable {
                        id: area
                        objectName: "area"
                        anchors.fill: parent
                        contentHeight: 2000
                        SegmentedPicker { width: 200; label: "Tipo"; options: ["Uno", "Dos"]; selection: "Dos" }
                    }
                }
            }
        })qml";
    }
    static void push(TestScreen &screen)
    {
        screen.tap(screen.find(u"open"_s));
        QTRY_COMPARE(screen.root()->property("progress").toReal(), 1);
        QTRY_VERIFY(!screen.root()->property("moving").toBool());
    }
    static int depth(TestScreen &screen) { return screen.root()->property("depth").toInt(); }
    static int appearances(TestScreen &screen) { return screen.root()->property("appearances").toInt(); }

    /// Drags from x to x in steps of a few pixels, with the button left down.
    static void drag(TestScreen &screen, int from, int to, int step = 6)
    {
        QTest::mousePress(&screen.window(), Qt::LeftButton, {}, QPoint(from, 400));
        for (int x = from; x <= to; x += step)
            QTest::mouseMove(&screen.window(), QPoint(x, 400), 8);
    }
    static void release(TestScreen &screen, int at)
    {
        QTest::mouseRelease(&screen.window(), Qt::LeftButton, {}, QPoint(at, 400), 200);
    }
};

void NavigationContainerTest::rootAppearsOnceAndCannotBeLeft()
{
    TestScreen screen(navigation());
    QCOMPARE(depth(screen), 1);
    QCOMPARE(appearances(screen), 1);
    screen.key(Qt::Key_Escape);
    screen.key(Qt::Key_Left, Qt::AltModifier);
    screen.key(Qt::Key_Back);
    QCOMPARE(depth(screen), 1);
    drag(screen, 5, 350);
    QCOMPARE(screen.find(u"home"_s)->x(), 0);
    release(screen, 350);
    QCOMPARE(appearances(screen), 1);
    QVERIFY(!screen.named(u"Atrás"_s));
}

void NavigationContainerTest::pushSlidesInFromTheRightOverTheDimmedScreen()
{
    TestScreen screen(navigation());
    screen.tap(screen.find(u"open"_s));
    QCOMPARE(depth(screen), 2);
    QQuickItem *const home = screen.find(u"home"_s);
    QQuickItem *const next = screen.find(u"next"_s);
    QVERIFY(next->x() > 0);
    QVERIFY(screen.find(u"dimming"_s)->isVisible());
    bool between = false;
    while (screen.root()->property("progress").toReal() < 1) {
        const qreal progress = screen.root()->property("progress").toReal();
        // At the nearest pixel.
        QCOMPARE(next->x(), std::round((1 - progress) * 390));
        QVERIFY(qAbs(home->x() + 0.3 * 390 * progress) <= 0.5);
        QCOMPARE(home->x(), std::round(home->x()));
        between = between || (progress > 0 && progress < 1);
        QTest::qWait(10);
    }
    QVERIFY(between);
    QCOMPARE(next->x(), 0);
    QTRY_VERIFY(!home->isVisible());
    QVERIFY(!screen.find(u"dimming"_s)->isVisible());
    // The pushed screen has the keys and the accessible tree for itself.
    QVERIFY(next->property("activeFocus").toBool());
    QCOMPARE(screen.names(), QStringList({u"Atrás"_s, u"Tipo"_s, u"Uno"_s, u"Dos"_s}));
}

void NavigationContainerTest::everyWayBackIsOnePop_data()
{
    QTest::addColumn<QString>("way");
    for (const char *way : {"control", "Escape", "Alt+Left", "Back"})
        QTest::newRow(way) << QString::fromLatin1(way);
}

void NavigationContainerTest::everyWayBackIsOnePop()
{
    QFETCH(QString, way);
    TestScreen screen(navigation());
    push(screen);
    // Where the arrows alone choose.
    screen.named(u"Dos"_s)->forceActiveFocus();
    if (way == u"control"_s)
        screen.tap(screen.named(u"Atrás"_s));
    else if (way == u"Escape"_s)
        screen.key(Qt::Key_Escape);
    else if (way == u"Back"_s)
        screen.key(Qt::Key_Back);
    else
        screen.key(Qt::Key_Left, Qt::AltModifier);
    QTRY_COMPARE(depth(screen), 1);
    QCOMPARE(appearances(screen), 2);
    QQuickItem *const home = screen.find(u"home"_s);
    QVERIFY(home->isVisible() && home->isEnabled() && home->property("activeFocus").toBool());
    QCOMPARE(home->x(), 0);
    QVERIFY(screen.named(u"Abrir"_s));
}

void NavigationContainerTest::screenBelowAppearsWhenThePopBegins()
{
    TestScreen screen(navigation());
    push(screen);
    const QPointer<QQuickItem> popped = screen.find(u"next"_s);
    screen.key(Qt::Key_Escape);
    QCOMPARE(appearances(screen), 2);
    QCOMPARE(depth(screen), 2);
    // Another one during the pop does nothing.
    screen.key(Qt::Key_Escape);
    QVERIFY(QMetaObject::invokeMethod(screen.root(), "pop"));
    QCOMPARE(depth(screen), 2);
    QTRY_COMPARE(depth(screen), 1);
    QCOMPARE(appearances(screen), 2);
    QTRY_VERIFY(!popped);
}

void NavigationContainerTest::swipeFollowsTheFingerAndPopsPastHalf()
{
    TestScreen screen(navigation());
    push(screen);
    drag(screen, 5, 300);
    QQuickItem *const next = screen.find(u"next"_s);
    QVERIFY2(next->x() > 200, qPrintable(QString::number(next->x())));
    QCOMPARE(depth(screen), 2);
    // The screen below comes on screen when the swipe is completed, not while it may still come back.
    QCOMPARE(appearances(screen), 1);
    release(screen, 300);
    QTRY_VERIFY(!next->isEnabled());
    QCOMPARE(depth(screen), 2);
    QTRY_COMPARE(depth(screen), 1);
    QCOMPARE(appearances(screen), 2);
}

void NavigationContainerTest::swipeThatStopsShortComesBackWhateverTheKeys()
{
    TestScreen screen(navigation());
    push(screen);
    drag(screen, 5, 120, 2);
    QQuickItem *const next = screen.find(u"next"_s);
    const qreal at = next->x();
    QVERIFY(at > 50);
    screen.key(Qt::Key_Escape);
    screen.key(Qt::Key_Left, Qt::AltModifier);
    QCOMPARE(next->x(), at);
    // Held still, so that it is no flick.
    for (int i = 0; i < 20; ++i)
        QTest::mouseMove(&screen.window(), QPoint(120 + i % 2, 400), 20);
    release(screen, 120);
    QTRY_VERIFY(screen.settledAt(2));
    QCOMPARE(next->x(), 0);
    QVERIFY(next->isEnabled());
    QCOMPARE(appearances(screen), 1);
    // Once it has come back, they pop again.
    screen.key(Qt::Key_Escape);
    QTRY_COMPARE(depth(screen), 1);
    QCOMPARE(appearances(screen), 2);
}

void NavigationContainerTest::repeatedKeyIsNoPop()
{
    TestScreen screen(navigation());
    push(screen);
    // The key that closed something over the screen is still down.
    QKeyEvent repeated(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier, {}, true);
    QCoreApplication::sendEvent(&screen.window(), &repeated);
    QCOMPARE(appearances(screen), 1);
    QVERIFY(screen.settledAt(2));
}

void NavigationContainerTest::flickPops()
{
    TestScreen screen(navigation());
    push(screen);
    QTest::mousePress(&screen.window(), Qt::LeftButton, {}, QPoint(5, 400));
    for (int x = 5; x <= 125; x += 12)
        QTest::mouseMove(&screen.window(), QPoint(x, 400), 4);
    QTest::mouseRelease(&screen.window(), Qt::LeftButton, {}, QPoint(125, 400), 1);
    QTRY_COMPARE(depth(screen), 1);
    QCOMPARE(appearances(screen), 2);
}

void NavigationContainerTest::swipeElsewhereOrOverACoveredScreenIsNoPop()
{
    TestScreen screen(navigation());
    push(screen);
    QQuickItem *const next = screen.find(u"next"_s);
    for (const int from : {25, 5}) {
        next->setProperty("covered", from == 5);
        drag(screen, from, 350);
        QCOMPARE(next->x(), 0);
        release(screen, 350);
        QCOMPARE(depth(screen), 2);
    }
}

void NavigationContainerTest::pushCompletesThePopBeforeIt()
{
    TestScreen screen(navigation());
    push(screen);
    const QPointer<QQuickItem> popped = screen.find(u"next"_s);
    screen.key(Qt::Key_Escape);
    QTRY_VERIFY(screen.root()->property("progress").toReal() < 1);
    QVERIFY(popped);
    auto *const page = screen.root()->property("next").value<QQmlComponent *>();
    QVERIFY(QMetaObject::invokeMethod(screen.root(), "push", Q_ARG(QQmlComponent *, page)));
    QCOMPARE(depth(screen), 2);
    QVERIFY(!popped || !popped->isVisible());
    QTRY_VERIFY(screen.settledAt(2));
    QTRY_VERIFY(!popped);
    QVERIFY(screen.find(u"next"_s)->isEnabled());
    QCOMPARE(screen.find(u"next"_s)->x(), 0);
}

void NavigationContainerTest::resizedWindowResizesEveryScreen()
{
    TestScreen screen(navigation());
    push(screen);
    screen.window().resize(700, 500);
    QTRY_COMPARE(screen.find(u"next"_s)->size(), QSizeF(700, 500));
    QCOMPARE(screen.find(u"home"_s)->size(), QSizeF(700, 500));
    QCOMPARE(screen.find(u"next"_s)->x(), 0);
}

void NavigationContainerTest::titleComesInTheBarOnceTheLargeOneIsGone()
{
    TestScreen screen("AppScreen { title: 'Perfil' }");
    for (const auto &[scrolled, shown] : {std::pair(44, false), {45, true}}) {
        screen.root()->setProperty("scrolled", scrolled);
        QTRY_COMPARE(screen.texts(screen.root()).contains(u"Perfil"_s), shown);
    }
}

MAROVENDA_TEST(NavigationContainerTest)
#include "tst_NavigationContainer.moc"
