#include "TestScreen.h"

#include "Modules.h"

#include <QAccessible>
#include <QGuiApplication>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QQmlComponent>
#include <QQmlContext>
#include <QTest>
#include <QtQml/qqmlextensionplugin.h>

using namespace Qt::StringLiterals;

namespace {

bool onShow(const QQuickItem *item)
{
    for (; item; item = item->parentItem()) {
        if (!item->isVisible() || qFuzzyIsNull(item->opacity()))
            return false;
    }
    return true;
}

QString textOf(const QQuickItem *item)
{
    if (!item->inherits("QQuickText"))
        return {};
    return item->property("text").toString();
}

/// All that is on show in the tree that assistive technology gets.
void hear(QAccessibleInterface *from, const std::function<void(QAccessibleInterface *)> &visit)
{
    for (int i = 0; i < from->childCount(); ++i) {
        QAccessibleInterface *const child = from->child(i);
        if (!child)
            continue;
        if (!child->state().invisible)
            visit(child);
        hear(child, visit);
    }
}

void walk(const QQuickItem *item, const std::function<void(const QQuickItem *)> &visit)
{
    if (!onShow(item))
        return;
    visit(item);
    for (const QQuickItem *child : item->childItems())
        walk(child, visit);
}

} // namespace

TextScale::TextScale(double scale) : m_before(QGuiApplication::font())
{
    QFont font = m_before;
    font.setPointSizeF(9 * scale);
    QGuiApplication::setFont(font);
}

TextScale::~TextScale() { QGuiApplication::setFont(m_before); }

TestScreen::TestScreen(const QByteArray &qml, QSize size) : m_view(std::make_unique<QQuickView>())
{
    addModules(*m_view->engine());
    auto *const component = new QQmlComponent(m_view->engine(), m_view.get());
    component->setData("import QtQuick\nimport Marovenda.Ui\nimport Marovenda.Account\nimport Marovenda.App\nimport "
                       "Marovenda.Logistics\n" +
                           qml,
                       QUrl(u"qrc:/test/Screen.qml"_s));
    QObject *const made = component->create();
    if (!made)
        qFatal("%s", qUtf8Printable(component->errorString()));
    m_view->setContent(component->url(), component, made);
    m_view->setResizeMode(QQuickView::SizeRootObjectToView);
    m_view->resize(size);
    m_view->show();
    m_view->requestActivate();
    if (!QTest::qWaitForWindowActive(m_view.get()))
        qFatal("The window did not come up");
    settle();
}

TestScreen::~TestScreen() = default;

QList<QQuickItem *> TestScreen::all(const QString &objectName, const QQuickItem *from) const
{
    QList<QQuickItem *> found;
    const std::function<void(const QQuickItem *)> look = [&](const QQuickItem *item) {
        if (item->objectName() == objectName)
            found.append(const_cast<QQuickItem *>(item));
        for (const QQuickItem *child : item->childItems())
            look(child);
    };
    look(from ? from : window().contentItem());
    return found;
}

QQuickItem *TestScreen::find(const QString &objectName, const QQuickItem *from) const
{
    const QList<QQuickItem *> found = all(objectName, from);
    if (found.isEmpty())
        qFatal("There is no %s", qUtf8Printable(objectName));
    return found.first();
}

QQuickItem *TestScreen::named(const QString &name) const
{
    QQuickItem *found = nullptr;
    hear(QAccessible::queryAccessibleInterface(m_view.get()), [&](QAccessibleInterface *each) {
        if (!found && each->text(QAccessible::Name) == name)
            found = qobject_cast<QQuickItem *>(each->object());
    });
    return found;
}

QStringList TestScreen::names() const
{
    QStringList all;
    hear(QAccessible::queryAccessibleInterface(m_view.get()), [&](QAccessibleInterface *each) {
        if (const QString name = each->text(QAccessible::Name); !name.isEmpty())
            all.append(name);
    });
    return all;
}

QString TestScreen::focusedName() const
{
    QAccessibleInterface *const heard = QAccessible::queryAccessibleInterface(m_view->activeFocusItem());
    return heard ? heard->text(QAccessible::Name) : QString();
}

QStringList TestScreen::tabStops(int count) const
{
    QStringList all;
    for (int i = 0; i < count; ++i) {
        key(Qt::Key_Tab);
        all.append(focusedName());
    }
    return all;
}

void TestScreen::press(QQuickItem *item)
{
    QAccessible::queryAccessibleInterface(item)->actionInterface()->doAction(
        QAccessibleActionInterface::pressAction());
}

QStringList TestScreen::texts(const QQuickItem *from) const
{
    QStringList all;
    walk(from ? from : root(), [&](const QQuickItem *item) {
        if (const QString found = textOf(item); !found.isEmpty())
            all.append(found);
    });
    return all;
}

void TestScreen::hold(Qt::Key key, bool releasesBetween, const std::function<void()> &whileDown) const
{
    const QString text = key == Qt::Key_Space ? u" "_s : QString();
    const auto send = [&](QEvent::Type type, bool repeated) {
        QKeyEvent event(type, key, Qt::NoModifier, text, repeated);
        QCoreApplication::sendEvent(m_view.get(), &event);
    };
    send(QEvent::KeyPress, false);
    if (whileDown)
        whileDown();
    for (int i = 0; i < 3; ++i) {
        if (releasesBetween)
            send(QEvent::KeyRelease, true);
        send(QEvent::KeyPress, true);
    }
    send(QEvent::KeyRelease, false);
}

void TestScreen::enter(const QString &objectName, const QString &text) const
{
    QQuickItem *const field = find(objectName);
    type(field, QString());
    QInputMethodEvent event;
    event.setCommitString(text);
    QCoreApplication::sendEvent(field, &event);
}

void TestScreen::compose(QQuickItem *field, const QString &text)
{
    QInputMethodEvent unfinished(text, {});
    QCoreApplication::sendEvent(field, &unfinished);
}

void TestScreen::touch(const QQuickItem *item) const
{
    static auto *const device = QTest::createTouchDevice();
    scrollTo(item);
    const QPoint at = box(item).center().toPoint();
    QTest::touchEvent(m_view.get(), device).press(1, at, m_view.get());
    QTest::touchEvent(m_view.get(), device).release(1, at, m_view.get());
}

QObject *TestScreen::viewModelOf(const QString &objectName) const
{
    auto *const found = qmlContext(find(objectName))->contextObject()->property("viewModel").value<QObject *>();
    if (!found)
        qFatal("%s has no view model", qUtf8Printable(objectName));
    return found;
}

QRectF TestScreen::box(const QQuickItem *item)
{
    return item->mapRectToScene(QRectF(0, 0, item->width(), item->height()));
}

void TestScreen::scrollTo(const QQuickItem *item) const
{
    // The screen may still scroll by itself with its next frame.
    (void)QTest::qWaitFor(
        [&] {
            settle();
            bringIntoView(item);
            settle();
            return QRectF(QPointF(), m_view->size()).contains(box(item).center());
        },
        1000);
}

void TestScreen::bringIntoView(const QQuickItem *item)
{
    for (QQuickItem *area = item->parentItem(); area; area = area->parentItem()) {
        if (!area->inherits("QQuickFlickable") || !area->property("interactive").toBool())
            continue;
        const QRectF at = area->mapRectFromItem(item, QRectF(0, 0, item->width(), item->height()));
        const auto scroll = [&](const char *position, qreal from, qreal to, qreal length) {
            const qreal beyond = to > length ? to - length : from < 0 ? from : 0;
            area->setProperty(position, area->property(position).toReal() + beyond);
        };
        scroll("contentY", at.top(), at.bottom(), area->height());
        scroll("contentX", at.left(), at.right(), area->width());
    }
}

void TestScreen::tap(const QQuickItem *item) const
{
    scrollTo(item);
    QTest::mouseClick(m_view.get(), Qt::LeftButton, {}, box(item).center().toPoint());
}

void TestScreen::type(const QQuickItem *field, const QString &text) const
{
    tap(field);
    QTest::keySequence(m_view.get(), QKeySequence::SelectAll);
    if (text.isEmpty()) {
        key(Qt::Key_Delete);
        return;
    }
    for (const QChar each : text)
        QTest::sendKeyEvent(QTest::Click, m_view.get(), Qt::Key_unknown, QString(each), Qt::NoModifier);
}

void TestScreen::key(Qt::Key key, Qt::KeyboardModifiers modifiers) const
{
    QTest::keyClick(m_view.get(), key, modifiers);
}

QByteArray TestScreen::pushing(const QByteArray &next)
{
    return R"qml(NavigationContainer {
        root: Component {
            AppScreen {
                id: home
                PrimaryButton { objectName: "open"; width: 200; text: "Abrir"; onClicked: home.push(next) }
            }
        }
        property Component next: Component { )qml" +
           next + " } }";
}

bool TestScreen::settledAt(int depth) const
{
    return root()->property("depth").toInt() == depth && !root()->property("moving").toBool();
}

QImage TestScreen::picture() const { return m_view->grabWindow(); }

void TestScreen::settle() const
{
    // What was put off to the end of the turn, and the layout that follows from it.
    QCoreApplication::sendPostedEvents();
    QTest::qWait(0);
    m_view->grabWindow();
}
