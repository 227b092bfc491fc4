#include "SecureFieldAccessible.h"

#include <QQuickItem>
#include <QQuickWindow>

#include <algorithm>

namespace {

constexpr QChar bullet(u'\u2022');

QAccessibleInterface *makeSecureField(const QString &, QObject *object)
{
    // Only fields have an echo mode.
    if (object->property("echoMode").toInt() == 0)
        return nullptr;
    return new SecureFieldAccessible(static_cast<QQuickItem *>(object));
}

} // namespace

void SecureFieldAccessible::install()
{
    [[maybe_unused]] static const bool once = [] {
        QAccessible::installFactory(makeSecureField);
        return true;
    }();
}

SecureFieldAccessible::SecureFieldAccessible(QQuickItem *field) : QAccessibleObject(field) {}

QQuickItem *SecureFieldAccessible::field() const { return static_cast<QQuickItem *>(object()); }

/// TextInput's boundingRect covers only its text.
QRectF SecureFieldAccessible::sceneRect() const
{
    return field()->mapRectToScene(QRectF(QPointF(), field()->size()));
}

QAccessibleInterface *SecureFieldAccessible::parent() const
{
    for (QQuickItem *item = field()->parentItem(); item; item = item->parentItem()) {
        if (item->window() && item == item->window()->contentItem())
            break;
        if (auto *const found = QAccessible::queryAccessibleInterface(item))
            return found;
    }
    return QAccessible::queryAccessibleInterface(field()->window());
}

QAccessibleInterface *SecureFieldAccessible::child(int) const { return nullptr; }
int SecureFieldAccessible::indexOfChild(const QAccessibleInterface *) const { return -1; }

QString SecureFieldAccessible::text(QAccessible::Text which) const
{
    switch (which) {
    case QAccessible::Name:
        return field()->property("hint").toString();
    case QAccessible::Value:
        return QString(characterCount(), bullet);
    default:
        return {};
    }
}

void SecureFieldAccessible::setText(QAccessible::Text which, const QString &text)
{
    if (which == QAccessible::Value)
        field()->setProperty("text", text);
}

QRect SecureFieldAccessible::rect() const
{
    const QRectF scene = sceneRect();
    const QQuickWindow *const view = field()->window();
    return view ? QRect(view->mapToGlobal(scene.topLeft().toPoint()), scene.size().toSize()) : QRect();
}

QAccessible::State SecureFieldAccessible::state() const
{
    QAccessible::State state;
    state.passwordEdit = true;
    state.editable = true;
    state.focusable = true;
    state.selectableText = true;
    state.focused = field()->hasActiveFocus();
    state.disabled = !field()->isEnabled();
    const QQuickWindow *const view = field()->window();
    state.invisible = !view || !view->isVisible() || !field()->isVisible() || qFuzzyIsNull(field()->opacity());
    state.offscreen = view && !QRectF(QPointF(), view->size()).intersects(sceneRect());
    return state;
}

QWindow *SecureFieldAccessible::window() const { return field()->window(); }

void *SecureFieldAccessible::interface_cast(QAccessible::InterfaceType type)
{
    switch (type) {
    case QAccessible::TextInterface:
        return static_cast<QAccessibleTextInterface *>(this);
    case QAccessible::EditableTextInterface:
        return static_cast<QAccessibleEditableTextInterface *>(this);
    case QAccessible::ActionInterface:
        return static_cast<QAccessibleActionInterface *>(this);
    default:
        return nullptr;
    }
}

int SecureFieldAccessible::characterCount() const { return field()->property("length").toInt(); }

QString SecureFieldAccessible::text(int start, int end) const
{
    const int count = characterCount();
    const int from = std::clamp(start, 0, count);
    return QString(std::clamp(end < 0 ? count : end, from, count) - from, bullet);
}

int SecureFieldAccessible::cursorPosition() const { return field()->property("cursorPosition").toInt(); }
void SecureFieldAccessible::setCursorPosition(int position) { field()->setProperty("cursorPosition", position); }

int SecureFieldAccessible::selectionCount() const
{
    return field()->property("selectionStart") != field()->property("selectionEnd") ? 1 : 0;
}

void SecureFieldAccessible::selection(int, int *start, int *end) const
{
    *start = field()->property("selectionStart").toInt();
    *end = field()->property("selectionEnd").toInt();
}

void SecureFieldAccessible::addSelection(int start, int end) { setSelection(0, start, end); }
void SecureFieldAccessible::removeSelection(int) { QMetaObject::invokeMethod(field(), "deselect"); }

void SecureFieldAccessible::setSelection(int, int start, int end)
{
    QMetaObject::invokeMethod(field(), "select", Q_ARG(int, start), Q_ARG(int, end));
}

QRect SecureFieldAccessible::characterRect(int) const { return {}; }
int SecureFieldAccessible::offsetAtPoint(const QPoint &) const { return -1; }
void SecureFieldAccessible::scrollToSubstring(int, int) {}

QString SecureFieldAccessible::attributes(int, int *start, int *end) const
{
    *start = 0;
    *end = characterCount();
    return {};
}

void SecureFieldAccessible::deleteText(int start, int end) { replaceText(start, end, {}); }
void SecureFieldAccessible::insertText(int offset, const QString &text) { replaceText(offset, offset, text); }

void SecureFieldAccessible::replaceText(int start, int end, const QString &text)
{
    QString whole = field()->property("text").toString();
    const auto from = std::clamp<qsizetype>(start, 0, whole.size());
    const auto to = std::clamp<qsizetype>(end < 0 ? whole.size() : end, from, whole.size());
    field()->setProperty("text", whole.replace(from, to - from, text));
}

QStringList SecureFieldAccessible::actionNames() const { return {setFocusAction()}; }

void SecureFieldAccessible::doAction(const QString &name)
{
    if (name == setFocusAction())
        field()->forceActiveFocus();
}

QStringList SecureFieldAccessible::keyBindingsForAction(const QString &) const { return {}; }
