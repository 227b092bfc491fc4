#pragma once

#include <QObject>
#include <QtQmlIntegration>

class QQuickItem;

/// Keeps the rows of a list in reading order. Assistive technology reads siblings in stacking order, and a view
/// stacks its rows in the order of creation, so a row created later above the others would be read last.
class ReadingOrder : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
public:
    using QObject::QObject;

    /// Stacks the row between its visible neighbours, according to the rows' "index" properties.
    Q_INVOKABLE static void place(QQuickItem *row);
};
