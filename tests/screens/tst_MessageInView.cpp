#include "MarovendaTest.h"
#include "ServiceTest.h"
#include "TestScreen.h"

#include <QGuiApplication>
#include <QTest>

using namespace Qt::StringLiterals;

/// The line under a form's button that tells how it went.
class MessageInViewTest : public ServiceTest {
    Q_OBJECT
private Q_SLOTS:
    void init() { ServiceTest::init(); }
    void cleanup()
    {
        ServiceTest::cleanup();
        setTextScale(1);
    }

    void messageIsScrolledIntoView_data();
    void messageIsScrolledIntoView();
    void typingGoesOnInView();

private:
    static void setTextScale(double scale)
    {
        QFont font = QGuiApplication::font();
        font.setPointSizeF(9 * scale);
        QGuiApplication::setFont(font);
    }
    static QByteArray form(const QByteArray &view)
    {
        return "NavigationContainer { root: Component { " + view + " {} } }";
    }
};

void MessageInViewTest::messageIsScrolledIntoView_data()
{
    QTest::addColumn<QByteArray>("view");
    QTest::addColumn<QString>("field");
    QTest::addColumn<QString>("button");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<double>("textScale");
    struct Form {
        QByteArray view;
        QString field;
        QString button;
    };
    const QList<Form> forms{{"LoginView", u"email"_s, u"iniciarSesion"_s},
                            {"RegistroView", u"nom"_s, u"registrar"_s},
                            {"PerfilView", u"nombre"_s, u"guardar"_s},
                            {"CotizarView", u"peso"_s, u"enviar"_s},
                            {"ImportarAutoView", u"marca"_s, u"enviar"_s}};
    for (const auto &[view, field, button] : forms) {
        QTest::newRow(view + " on a small phone") << view << field << button << QSize(320, 480) << 1.0;
        QTest::newRow(view + " in large text") << view << field << button << QSize(390, 844) << 2.0;
        QTest::newRow(view + " in large text on a small phone") << view << field << button << QSize(320, 480) << 2.0;
    }
}

void MessageInViewTest::messageIsScrolledIntoView()
{
    QFETCH(QByteArray, view);
    QFETCH(QString, field);
    QFETCH(QString, button);
    QFETCH(QSize, size);
    QFETCH(double, textScale);
    setTextScale(textScale);
    TestScreen screen(form(view), size);
    const QQuickItem *const message = screen.find(u"msg"_s);
    // The field keeps the focus, far above the message.
    screen.tap(screen.find(field));
    QTest::mouseMove(&screen.window(), QPoint(1, 1));
    screen.scrollTo(screen.find(button));
    QTest::mouseClick(&screen.window(), Qt::LeftButton, {}, TestScreen::box(screen.find(button)).center().toPoint());
    QTRY_VERIFY(!message->property("text").toString().isEmpty());
    const auto inView = [&] { return QRectF(QPointF(), QSizeF(size)).contains(TestScreen::box(message)); };
    QTRY_VERIFY(inView());
    // What is arranged later leaves it there.
    for (int i = 0; i < 3; ++i)
        screen.settle();
    QVERIFY(inView());
    QVERIFY(screen.find(field)->hasActiveFocus());
}

void MessageInViewTest::typingGoesOnInView()
{
    setTextScale(2);
    TestScreen screen(form("RegistroView"), {320, 480});
    QQuickItem *const field = screen.find(u"nom"_s);
    screen.tap(field);
    screen.tap(screen.find(u"registrar"_s));
    screen.settle();
    QVERIFY(TestScreen::box(field).top() < 0);
    QTest::sendKeyEvent(QTest::Click, &screen.window(), Qt::Key_unknown, u"A"_s, Qt::NoModifier);
    QTRY_VERIFY(TestScreen::box(field).top() >= 0);
}

MAROVENDA_TEST_MAIN(MessageInViewTest)
#include "tst_MessageInView.moc"
