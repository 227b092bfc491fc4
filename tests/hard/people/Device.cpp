#include "Device.h"

#include "Modules.h"
#include "Session.h"
#include "TestScreen.h"

#include <private/qabstractanimation_p.h>
#include <QElapsedTimer>
#include <QTest>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr int patience = 20000;
constexpr double fast = 1.0 / 50;

QQuickItem *search(QQuickItem *from, const std::function<bool(const QQuickItem *)> &wanted)
{
    if (!from->isVisible())
        return nullptr;
    if (wanted(from))
        return from;
    const auto children = from->childItems();
    for (QQuickItem *child : children) {
        if (QQuickItem *const found = search(child, wanted))
            return found;
    }
    return nullptr;
}

QString differs(const QString &what, const QString &found, const QString &wanted)
{
    return found == wanted ? QString() : u"%1 is \"%2\", not \"%3\""_s.arg(what, found, wanted);
}

/// Whether screens still slide, something on them rolls on, or what has closed over one still fades: what is touched
/// then only stops, or is not there for anybody yet.
bool moves(const QQuickItem *item)
{
    const bool fades = item->property("covering").toBool() && !item->property("shown").toBool();
    return fades || item->property("moving").toBool() || std::ranges::any_of(item->childItems(), moves);
}

} // namespace

Device::Device()
{
    init();
    addModules(m_engine);
    m_engine.load(QUrl(u"qrc:/Marovenda/App/MarovendaApp.qml"_s));
    m_window = qobject_cast<QQuickWindow *>(m_engine.rootObjects().value(0));
    if (!m_window || !wait([this] { return container() != nullptr; }))
        qFatal("The app did not start");
    m_window->requestActivate();
    if (!QTest::qWaitForWindowActive(m_window))
        qFatal("The window did not come up");
    QUnifiedTimer::instance()->setSlowModeEnabled(true);
    QUnifiedTimer::instance()->setSlowdownFactor(fast);
}

Device::~Device()
{
    server.clear();
    wait([] { return exchangesInFlight() == 0; });
    ignoreOpened();
}

bool Device::wait(const std::function<bool()> &come)
{
    QElapsedTimer since;
    since.start();
    while (!come()) {
        if (since.elapsed() > patience)
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 2);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    return true;
}

void Device::begin(qint64 user)
{
    server.clear();
    if (!wait([] { return exchangesInFlight() == 0; }))
        qFatal("Exchanges do not end");
    Session &session = Session::instance();
    // Whoever it was, the first screen is a new one.
    session.setUserId(7);
    session.setUserId(0);
    if (user == 0)
        session.setUserId(7);
    session.setUserNombre({});
    session.setUserEmail({});
    if (!wait([this, user] { return exchangesInFlight() == 0 && find(user == 0 ? u"greeting"_s : u"registro"_s); }))
        qFatal("The first screen of %lld does not come: %lld exchanges under way, %s on show", user,
               exchangesInFlight(), page() ? page()->metaObject()->className() : "nothing");
    server.clear();
    for (const char *path : {"login", "recuperar", "registro", "perfil", "casillero", "cotizar", "auto", "paquetes"})
        server.hold("/api_" + QByteArray(path) + ".php");
    session.setUserId(user);
}

QQuickItem *Device::container() const
{
    return search(m_window->contentItem(), [](const QQuickItem *item) {
        return QByteArray(item->metaObject()->className()).startsWith("NavigationContainer_QMLTYPE");
    });
}

QQuickItem *Device::page() const
{
    const QQuickItem *const navigation = container();
    return navigation ? navigation->property("current").value<QQuickItem *>() : nullptr;
}

QQuickItem *Device::find(const QString &objectName) const
{
    QQuickItem *const on = page();
    return on ? search(on, [&](const QQuickItem *item) { return item->objectName() == objectName; }) : nullptr;
}

void Device::tap(const QString &objectName)
{
    QQuickItem *const item = find(objectName);
    if (!item)
        return;
    TestScreen::bringIntoView(item);
    QTest::mouseClick(m_window, Qt::LeftButton, {}, TestScreen::box(item).center().toPoint());
}

void Device::type(const QString &objectName, const QString &text)
{
    tap(objectName);
    QTest::keySequence(m_window, QKeySequence::SelectAll);
    if (text.isEmpty())
        key(Qt::Key_Delete);
    for (const QChar each : text)
        QTest::sendKeyEvent(QTest::Click, m_window, Qt::Key_unknown, QString(each), Qt::NoModifier);
}

void Device::key(Qt::Key key, Qt::KeyboardModifiers modifiers) { QTest::keyClick(m_window, key, modifiers); }

void Device::swipeBack()
{
    QTest::mousePress(m_window, Qt::LeftButton, {}, QPoint(5, 500));
    for (int x = 20; x <= 340; x += 40)
        QTest::mouseMove(m_window, QPoint(x, 500));
    QTest::mouseRelease(m_window, Qt::LeftButton, {}, QPoint(340, 500));
}

void Device::scroll()
{
    QTest::mousePress(m_window, Qt::LeftButton, {}, QPoint(382, 700));
    for (int y = 690; y >= 300; y -= 60)
        QTest::mouseMove(m_window, QPoint(382, y));
    QTest::mouseRelease(m_window, Qt::LeftButton, {}, QPoint(382, 300));
}

void Device::answer(qsizetype index, const Reply &reply)
{
    const auto held = server.held.takeAt(index);
    if (reply.lost)
        held->close();
    else
        held->send(reply.bytes());
}

QString Device::settle(const Model &model)
{
    const bool come = wait([&] {
        return server.requests().size() >= model.requests && exchangesInFlight() == model.pending.size() &&
               container() && !moves(container());
    });
    // Two turns: a completion may put its assignment off to the next one.
    for (int turn = 0; turn < 3; ++turn) {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
    }
    if (!come)
        return u"%1 requests of %2 came, %3 of %4 are under way"_s.arg(server.requests().size())
            .arg(model.requests)
            .arg(exchangesInFlight())
            .arg(model.pending.size());
    if (server.requests().size() != model.requests)
        return u"%1 requests came, not %2"_s.arg(server.requests().size()).arg(model.requests);
    return {};
}

QString Device::difference(const Model &model) const
{
    const QString &mark = Model::pageOf(model.top().kind).mark;
    if (!find(mark))
        return u"the screen with %1 is not visible"_s.arg(mark);
    Session &session = Session::instance();
    QString all =
        differs(u"depth"_s, container()->property("depth").toString(), QString::number(model.stack.size())) +
        differs(u"user_id"_s, QString::number(session.userId()), QString::number(model.user)) +
        differs(u"user_nombre"_s, session.userNombre(), model.nombre) +
        differs(u"user_email"_s, session.userEmail(), model.email);
    for (const auto &[name, property, value] : model.shown()) {
        const QQuickItem *const item = find(name);
        all += differs(name, item ? item->property(property).toString() : QString(), value);
    }
    return all;
}
