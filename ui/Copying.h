#pragma once

#include <QObject>
#include <QtQmlIntegration>

/// Copies texts that the customer needs elsewhere: an address, a tracking number, a link. An item that can be copied
/// has a property "copyText", empty for nothing; assistive technology finds the action "Copiar" there.
class Copying : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
public:
    explicit Copying(QObject *parent = nullptr);

    /// Puts the text on the clipboard and emits `copied`. Does nothing if the text is empty.
    Q_INVOKABLE void copy(const QString &text);

    /// Adds the action to the items that are presented to assistive technology from now on. Call it after Qt Quick
    /// has been loaded; further calls do nothing.
    static void install();

Q_SIGNALS:
    void copied();
};
