#pragma once

#include <QObject>
#include <QtQmlIntegration>

/// Text that an input method is still composing: the field shows it, but it is not yet part of the field's text.
class UnfinishedText : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
public:
    using QObject::QObject;

    /// Commits the unfinished text of the focused field, so that an action works with the text on screen.
    Q_INVOKABLE void commit();
    /// Commits the unfinished text of `field`, if any. The field need not have the focus.
    Q_INVOKABLE void commitIn(QObject *field);
};
