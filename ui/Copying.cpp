#include "Copying.h"

#include <private/qaccessiblequickitem_p.h>
#include <private/qquickitem_p.h>
#include <QClipboard>
#include <QGuiApplication>
#include <QPointer>

using namespace Qt::StringLiterals;

namespace {

constexpr auto copyText = "copyText";

QPointer<Copying> &made()
{
    static QPointer<Copying> copying;
    return copying;
}

/// Qt Quick offers no actions of an item's own.
class CopyableItem final : public QAccessibleQuickItem {
public:
    using QAccessibleQuickItem::QAccessibleQuickItem;

    QStringList actionNames() const override
    {
        QStringList names = QAccessibleQuickItem::actionNames();
        if (!object()->property(copyText).toString().isEmpty())
            names.append(action());
        return names;
    }

    void doAction(const QString &name) override
    {
        if (name != action())
            QAccessibleQuickItem::doAction(name);
        else if (made())
            made()->copy(object()->property(copyText).toString());
    }

    QString localizedActionName(const QString &name) const override
    {
        return name == action() ? name : QAccessibleQuickItem::localizedActionName(name);
    }

private:
    static QString action() { return u"Copiar"_s; }
};

QAccessibleInterface *makeCopyable(const QString &, QObject *object)
{
    auto *const item = qobject_cast<QQuickItem *>(object);
    if (!item || !item->property(copyText).isValid() || !QQuickItemPrivate::get(item)->isAccessible)
        return nullptr;
    return new CopyableItem(item);
}

} // namespace

Copying::Copying(QObject *parent) : QObject(parent) { made() = this; }

void Copying::copy(const QString &text)
{
    if (text.isEmpty())
        return;
    QGuiApplication::clipboard()->setText(text);
    emit copied();
}

void Copying::install()
{
    [[maybe_unused]] static const bool once = [] {
        QAccessible::installFactory(makeCopyable);
        return true;
    }();
}
