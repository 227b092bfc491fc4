#include "TestScreen.h"

#include "Modules.h"

#include <QAccessible>
#include <QQmlComponent>
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

QString nameOf(const QQuickItem *item)
{
    QAccessibleInterface *const found = QAccessible::queryAccessibleInterface(const_cast<QQuickItem *>(item));
    if (!found || found->state().invisible)
        return {};
    return found->text(QAccessible::Name);
}

/// Children in the order in which they were declared; a list's own order of creation may differ.
void walk(const QQuickItem *item, const std::function<void(const QQuickItem *)> &visit)
{
    if (!onShow(item))
        return;
    visit(item);
    for (const QQuickItem *child : item->childItems())
        walk(child, visit);
}

} // namespace

TestScreen::TestScreen(const QByteArray &qml, QSize size) : m_view(std::make_unique<QQuickView>())
{
    addModules(*m_view->engine());
    QAccessible::setActive(true);
    auto *const component = new QQmlComponent(m_view->engine(), m_view.get());
    component->setData("import QtQuick\nimport Marovenda.Ui\nimport Marovenda.Account\nimport Marovenda.Logistics\n" + qml,
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

QQuickItem *TestScreen::find(const QString &objectName, const QQuickItem *from) const
{
    auto *const found = (from ? from : root())->findChild<QQuickItem *>(objectName);
    if (!found)
        qFatal("There is no %s", qUtf8Printable(objectName));
    return found;
}

QList<QQuickItem *> TestScreen::all(const QString &objectName) const
{
    return root()->findChildren<QQuickItem *>(objectName);
}

QQuickItem *TestScreen::named(const QString &name) const
{
    const QQuickItem *found = nullptr;
    walk(root(), [&](const QQuickItem *item) {
        if (!found && nameOf(item) == name)
            found = item;
    });
    return const_cast<QQuickItem *>(found);
}

QStringList TestScreen::collect(const QQuickItem *from, QString (*what)(const QQuickItem *)) const
{
    QStringList all;
    walk(from ? from : root(), [&](const QQuickItem *item) {
        if (const QString found = what(item); !found.isEmpty())
            all.append(found);
    });
    return all;
}

QStringList TestScreen::names() const { return collect(nullptr, nameOf); }
QStringList TestScreen::texts(const QQuickItem *from) const { return collect(from, textOf); }

QRectF TestScreen::box(const QQuickItem *item)
{
    return item->mapRectToScene(QRectF(0, 0, item->width(), item->height()));
}

void TestScreen::tap(const QQuickItem *item) const
{
    settle();
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

QImage TestScreen::picture() const { return m_view->grabWindow(); }

void TestScreen::settle() const
{
    // What was put off to the end of the turn, and the layout that follows from it.
    QCoreApplication::sendPostedEvents();
    QTest::qWait(0);
    m_view->grabWindow();
}
