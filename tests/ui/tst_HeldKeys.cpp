#include "HeldKeys.h"
#include "MarovendaTest.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QTest>
#include <QWindow>

#include <array>
#include <cstring>

using namespace Qt::StringLiterals;

namespace {

/// Notes of each press whether it is a repeat.
class Window : public QWindow {
public:
    QString seen;

protected:
    void keyPressEvent(QKeyEvent *event) override { seen += event->isAutoRepeat() ? u'r' : u'p'; }
};

} // namespace

class HeldKeysTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void repeatsAreToldFromPresses_data();
    void repeatsAreToldFromPresses();
};

void HeldKeysTest::repeatsAreToldFromPresses_data()
{
    QTest::addColumn<QString>("story");
    QTest::addColumn<QString>("seen");
    // What comes in order: "+A7" and "-A7" are the display's press and release of a key at a time, "A" and "R" what
    // Qt makes of a press, R if it has seen itself that it is a repeat, and O a press for an object in the window.
    QTest::newRow("pressed once") << u"+A1 A -A2"_s << u"p"_s;
    QTest::newRow("held") << u"+A1 A -A7 +A7 A -A8 +A8 A -A9"_s << u"prr"_s;
    QTest::newRow("held, seen by Qt") << u"+A1 A -A7 +A7 R -A8 +A8 A"_s << u"prr"_s;
    QTest::newRow("pressed again") << u"+A1 A -A2 +A3 A -A4 +A5 A"_s << u"ppp"_s;
    QTest::newRow("pressed again before Qt tells of the first") << u"+A1 -A2 +A3 A -A4 A"_s << u"pp"_s;
    QTest::newRow("held before Qt tells of the first") << u"+A1 -A7 +A7 -A8 +A8 A A A"_s << u"prr"_s;
    QTest::newRow("another key in between") << u"+A1 A -A7 +A7 A +B8 B -B9 +B9 B"_s << u"prpr"_s;
    QTest::newRow("released by another key at the time of a press") << u"+A1 A -B7 +A7 A"_s << u"pp"_s;
    QTest::newRow("pressed long after an input method kept a press") << u"+A1 +A5000 A -A5007 +A5007 A"_s << u"pr"_s;
    QTest::newRow("pressed just before Qt gives up the kept press") << u"+A1 +A1001 A -A1008 +A1008 A"_s << u"pp"_s;
    QTest::newRow("passed on to an object") << u"+A1 O A"_s << u"p"_s;
    QTest::newRow("by a program, without a display") << u"A A"_s << u"pp"_s;
}

void HeldKeysTest::repeatsAreToldFromPresses()
{
    QFETCH(QString, story);
    HeldKeys held;
    Window window;
    for (const QString &step : story.split(u' ')) {
        const bool isNative = step.startsWith(u'+') || step.startsWith(u'-');
        const auto key = static_cast<uchar>(step[isNative ? 1 : 0] == u'B' ? 39 : 38);
        if (!isNative) {
            QKeyEvent press(QEvent::KeyPress, Qt::Key_A, {}, key, 0, 0, u"a"_s, step == u"R"_s);
            QCoreApplication::sendEvent(step == u"O"_s ? static_cast<QObject *>(this) : &window, &press);
            continue;
        }
        std::array<uchar, 32> event{};
        event[0] = step.startsWith(u'+') ? 2 : 3;
        event[1] = key;
        const quint32 time = step.sliced(2).toUInt();
        std::memcpy(event.data() + 4, &time, sizeof time);
        QVERIFY(!held.nativeEventFilter("xcb_generic_event_t", event.data(), nullptr));
        QVERIFY(!held.nativeEventFilter("another", event.data(), nullptr));
        QVERIFY(!held.eventFilter(&window, std::make_unique<QEvent>(QEvent::Expose).get()));
    }
    QTEST(window.seen, "seen");
}

MAROVENDA_TEST(HeldKeysTest)
#include "tst_HeldKeys.moc"
