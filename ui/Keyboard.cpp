#include "Keyboard.h"

#include <QGuiApplication>
#include <QInputMethodQueryEvent>
#include <QKeyEvent>
#include <QWindow>

#include <utility>

namespace {

bool isTyping()
{
    QObject *const focus = QGuiApplication::focusObject();
    QInputMethodQueryEvent query(Qt::ImEnabled);
    return focus && QCoreApplication::sendEvent(focus, &query) && query.value(Qt::ImEnabled).toBool();
}

bool isNavigation(int key)
{
    switch (key) {
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
        return true;
    case Qt::Key_Left:
    case Qt::Key_Right:
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_Home:
    case Qt::Key_End:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Space:
        return !isTyping();
    default:
        return false;
    }
}

} // namespace

Keyboard::Keyboard(QObject *parent) : QObject(parent) { qGuiApp->installEventFilter(this); }

bool Keyboard::eventFilter(QObject *watched, QEvent *event)
{
    bool navigating = m_navigating;
    // Windows receive each event before their items do.
    if (qobject_cast<QWindow *>(watched)) {
        if (event->type() == QEvent::KeyPress)
            navigating = navigating || isNavigation(static_cast<QKeyEvent *>(event)->key());
        else if (event->type() == QEvent::MouseButtonPress || event->type() == QEvent::TouchBegin)
            navigating = false;
    }
    if (std::exchange(m_navigating, navigating) != navigating)
        emit navigatingChanged();
    return QObject::eventFilter(watched, event);
}
