#include "Handset.h"

#include "Modules.h"

#include <QEventLoop>
#include <QFile>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QQmlContext>
#include <QTimer>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// Returns the topmost match, which is the last one in the item tree.
template <class Wanted>
QQuickItem *last(QQuickItem *from, const Wanted &wanted)
{
    if (!from->isVisible())
        return nullptr;
    const QList<QQuickItem *> children = from->childItems();
    for (auto child = children.crbegin(); child != children.crend(); ++child) {
        if (QQuickItem *const found = last(*child, wanted))
            return found;
    }
    return wanted(*from) ? from : nullptr;
}

} // namespace

Handset::Handset(TimedApplication &application) : m_application(application) { addModules(m_engine); }

void Handset::open(const QUrl &window)
{
    m_engine.load(window);
    m_window = qobject_cast<QQuickWindow *>(m_engine.rootObjects().value(0));
    if (!m_window)
        qFatal("The app has no window.");
}

void Handset::waitForHome(int packages)
{
    until([&] {
        const QQuickItem *const count = maybeItem(u"paqueteCount"_s);
        return count && count->property("count").toInt() == packages;
    });
}

QQuickItem *Handset::maybeItem(const QString &objectName) const
{
    return last(m_window->contentItem(), [&](const QQuickItem &one) { return one.objectName() == objectName; });
}

QQuickItem *Handset::item(const QString &objectName) const
{
    QQuickItem *const found = maybeItem(objectName);
    if (!found)
        qFatal("There is no %s.", qUtf8Printable(objectName));
    return found;
}

QQuickItem *Handset::control(const QString &text) const
{
    QQuickItem *const found = last(m_window->contentItem(), [&](const QQuickItem &one) {
        return one.inherits("QQuickAbstractButton") && one.property("text").toString() == text;
    });
    if (!found)
        qFatal("There is no control %s.", qUtf8Printable(text));
    return found;
}

QObject *Handset::viewModelOf(const QQuickItem *item)
{
    const QQmlContext *const context = qmlContext(item);
    QObject *const found = context ? context->objectForName(u"viewModel"_s) : nullptr;
    if (!found)
        qFatal("There is no view model.");
    return found;
}

void Handset::tap(const QQuickItem *item) const
{
    const QPointF place = item->mapToScene({item->width() / 2, item->height() / 2});
    for (const auto type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
        const bool press = type == QEvent::MouseButtonPress;
        QMouseEvent event(type, place, m_window->mapToGlobal(place), Qt::LeftButton,
                          press ? Qt::LeftButton : Qt::NoButton, Qt::NoModifier);
        QCoreApplication::sendEvent(m_window, &event);
    }
}

void Handset::type(Qt::Key key, const QString &text) const
{
    for (const auto type : {QEvent::KeyPress, QEvent::KeyRelease}) {
        QKeyEvent event(type, key, Qt::NoModifier, text);
        QCoreApplication::sendEvent(m_window, &event);
    }
}

void Handset::until(const std::function<bool()> &holds) const
{
    QEventLoop loop;
    const auto look = [&] {
        if (holds())
            loop.quit();
    };
    const auto frames = QObject::connect(m_window, &QQuickWindow::frameSwapped, &loop, look);
    QTimer often;
    often.callOnTimeout(look);
    often.start(20ms);
    QTimer::singleShot(120s, &loop, [] { qFatal("What was waited for has not come."); });
    if (!holds())
        loop.exec();
}

Handset::Time Handset::frameWith(const std::function<bool()> &holds) const
{
    Time done{};
    QEventLoop loop;
    QObject::connect(m_window, &QQuickWindow::frameSwapped, &loop, [&] {
        if (done == Time() && holds()) {
            done = TimedApplication::now();
            loop.quit();
        }
    });
    QTimer::singleShot(120s, &loop, [] { qFatal("The frame has not come."); });
    loop.exec();
    return done;
}

void Handset::rest(std::chrono::milliseconds time)
{
    QEventLoop loop;
    QTimer::singleShot(time, &loop, &QEventLoop::quit);
    loop.exec();
}

qint64 memory(const QByteArray &line)
{
    QFile status(u"/proc/self/status"_s);
    if (!status.open(QFile::ReadOnly))
        qFatal("The system keeps no account of memory.");
    for (const QByteArray &one : status.readAll().split('\n')) {
        if (one.startsWith(line))
            return 1024 * one.sliced(line.size()).trimmed().split(' ').first().toLongLong();
    }
    qFatal("The system keeps no such account.");
}
