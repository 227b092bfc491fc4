#pragma once

#include <QObject>
#include <QtQmlIntegration>

class QQuickItem;

/// The order in which assistive technology reads the rows of a list. It reads siblings as they are stacked, but a
/// view stacks its rows as it makes them, and one that comes above the others would be read last.
class ReadingOrder : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
public:
    using QObject::QObject;

    /// Stacks a row, whose place in the list is its property "index", among the visible ones beside it.
    Q_INVOKABLE static void place(QQuickItem *row);
};
