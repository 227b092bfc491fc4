#pragma once

#include <QObject>
#include <QtQmlIntegration>

/// The text that an input method has not finished yet: seen in the field, but not yet part of its value.
class UnfinishedText : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
public:
    using QObject::QObject;

    /// Makes the focused field's unfinished text part of its value, so that an action works with what is on screen.
    Q_INVOKABLE void commit();
    /// The same for one field, which need not have the focus any more. Does nothing without unfinished text.
    Q_INVOKABLE void commitIn(QObject *field);
};
