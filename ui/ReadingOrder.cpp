#include "ReadingOrder.h"

#include <QQuickItem>

void ReadingOrder::place(QQuickItem *row)
{
    if (!row->parentItem())
        return;
    const int place = row->property("index").toInt();
    QQuickItem *before = nullptr;
    QQuickItem *after = nullptr;
    int beforeAt = 0;
    int afterAt = 0;
    const QList<QQuickItem *> siblings = row->parentItem()->childItems();
    for (QQuickItem *each : siblings) {
        const QVariant index = each->property("index");
        if (each == row || !each->isVisible() || !index.isValid())
            continue;
        const int at = index.toInt();
        if (at < place && (!before || at > beforeAt)) {
            before = each;
            beforeAt = at;
        } else if (at > place && (!after || at < afterAt)) {
            after = each;
            afterAt = at;
        }
    }
    if (before)
        row->stackAfter(before);
    else if (after)
        row->stackBefore(after);
}
