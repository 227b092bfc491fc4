#include "MarovendaTest.h"
#include "TestScreen.h"

#include <private/qinputmethod_p.h>
#include <QGuiApplication>
#include <qpa/qplatforminputcontext.h>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

/// An on-screen keyboard of a height, which covers the lower part of the window.
class Keyboard : public QPlatformInputContext {
public:
    bool isValid() const override { return true; }
    bool isInputPanelVisible() const override { return m_visible; }
    QRectF keyboardRect() const override
    {
        return QRectF(0, m_window.height() - m_height, m_window.width(), m_height);
    }

    void open(QSize window, qreal height) { tell(window, height, height > 0); }
    /// Some keyboards have no place until they are there, or keep it when they go.
    void tell(QSize window, qreal height, bool visible)
    {
        m_visible = visible;
        m_window = window;
        m_height = height;
        emitInputPanelVisibleChanged();
        emitKeyboardRectChanged();
    }

private:
    QSizeF m_window;
    qreal m_height = 0;
    bool m_visible = false;
};

} // namespace

class OnScreenKeyboardTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init() { QInputMethodPrivate::get(QGuiApplication::inputMethod())->testContext = &m_keyboard; }
    void cleanup()
    {
        m_keyboard.open({}, 0);
        QInputMethodPrivate::get(QGuiApplication::inputMethod())->testContext = nullptr;
    }
    void everyFieldStaysAboveTheKeyboard_data();
    void everyFieldStaysAboveTheKeyboard();
    void alertStaysAboveTheKeyboard();
    void everythingCanBeScrolledAboveTheKeyboard();
    void contentReturnsWhenTheKeyboardCloses();

private:
    Keyboard m_keyboard;
};

void OnScreenKeyboardTest::everyFieldStaysAboveTheKeyboard_data()
{
    QTest::addColumn<QByteArray>("view");
    QTest::addColumn<QStringList>("fields");
    QTest::addColumn<QSize>("size");
    const QList<QPair<QByteArray, QStringList>> forms{
        {"LoginView {}", {u"email"_s, u"pass"_s}},
        {"RegistroView {}", {u"nom"_s, u"email"_s, u"direccion"_s, u"ciudad"_s, u"pass"_s}},
        {"PerfilView {}", {u"nombre"_s, u"email"_s}},
        {"CotizarView {}", {u"peso"_s, u"valor"_s, u"descripcion"_s}},
        {"ImportarAutoView {}", {u"marca"_s, u"modelo"_s, u"anio"_s, u"ubicacion"_s}},
        {"DashboardView { screens: ServiceScreens {} }", {u"trackingText"_s}},
    };
    for (const auto &[view, fields] : forms) {
        QTest::addRow("%s 390 x 844", view.constData()) << view << fields << QSize(390, 844);
        QTest::addRow("%s 320 x 480", view.constData()) << view << fields << QSize(320, 480);
    }
}

void OnScreenKeyboardTest::everyFieldStaysAboveTheKeyboard()
{
    QFETCH(QByteArray, view);
    QFETCH(QStringList, fields);
    QFETCH(QSize, size);
    TestScreen screen(TestScreen::alone(view), size);
    const int height = size.height() * 2 / 5;
    const auto inView = [&](const QString &name) {
        const QRectF box = TestScreen::box(screen.find(name));
        return box.top() >= 0 && box.bottom() <= size.height() - height;
    };
    // The keyboard opens under a field that has the focus.
    for (const QString &name : std::as_const(fields)) {
        screen.find(name)->forceActiveFocus();
        m_keyboard.open(size, height);
        QTRY_VERIFY2(inView(name), qPrintable(name));
        m_keyboard.open(size, 0);
    }
    // A field gets the focus above an open keyboard.
    m_keyboard.open(size, height);
    for (const QString &name : std::as_const(fields)) {
        screen.find(name)->forceActiveFocus();
        QTRY_VERIFY2(inView(name), qPrintable(name));
    }
}

void OnScreenKeyboardTest::alertStaysAboveTheKeyboard()
{
    for (const QSize size : {QSize(390, 844), QSize(320, 480)}) {
        TestScreen screen(TestScreen::alone("LoginView {}"), size);
        screen.tap(screen.find(u"recuperar"_s));
        const int height = size.height() * 2 / 5;
        m_keyboard.open(size, height);
        QTRY_VERIFY(TestScreen::box(screen.find(u"alertInput"_s)).bottom() <= size.height() - height);
        QTRY_VERIFY(TestScreen::box(screen.named(u"Enviar"_s)).bottom() <= size.height() - height - 8);
        m_keyboard.open(size, 0);
    }
}

void OnScreenKeyboardTest::everythingCanBeScrolledAboveTheKeyboard()
{
    // The form fits the window without the keyboard.
    const QSize size(390, 844);
    TestScreen screen(TestScreen::alone("CotizarView {}"), size);
    QQuickItem *const area = screen.find(u"enviar"_s)->parentItem()->parentItem()->parentItem()->parentItem();
    QVERIFY(!area->property("interactive").toBool());
    m_keyboard.open(size, 500);
    screen.settle();
    QVERIFY(area->property("interactive").toBool());
    const qreal end = area->property("contentHeight").toReal() + area->property("bottomMargin").toReal() -
                      size.height() + TestScreen::box(area).top();
    area->setProperty("contentY", end);
    QTRY_VERIFY(TestScreen::box(screen.find(u"enviar"_s)).bottom() <= size.height() - 500);
}

void OnScreenKeyboardTest::contentReturnsWhenTheKeyboardCloses()
{
    const QSize size(390, 844);
    TestScreen screen(TestScreen::alone("LoginView {}"), size);
    const QRectF before = TestScreen::box(screen.find(u"pass"_s));
    screen.find(u"pass"_s)->forceActiveFocus();
    m_keyboard.open(size, 500);
    QTRY_VERIFY(TestScreen::box(screen.find(u"pass"_s)).bottom() <= 344);
    m_keyboard.tell(size, 500, false);
    QTRY_COMPARE(TestScreen::box(screen.find(u"pass"_s)), before);
    m_keyboard.tell(size, 0, true);
    screen.settle();
    QCOMPARE(TestScreen::box(screen.find(u"pass"_s)), before);
}

MAROVENDA_TEST(OnScreenKeyboardTest)
#include "tst_OnScreenKeyboard.moc"
