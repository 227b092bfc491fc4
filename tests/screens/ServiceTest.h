#pragma once

#include "ScriptedServer.h"

#include <QJsonObject>
#include <QObject>
#include <QUrl>

/// What the tests of a screen stand on: the real client against a scripted server, a session that starts empty, and
/// the addresses that the app hands to the system. Qt Test calls its slots for a derived class that has none of its
/// own.
class ServiceTest : public QObject {
    Q_OBJECT
public:
    ServiceTest();

    Q_INVOKABLE void noteOpened(const QUrl &url) { opened.append(url); }

protected Q_SLOTS:
    void init();
    void cleanup();

protected:
    /// Addresses are no longer noted.
    static void ignoreOpened();
    /// How many exchanges of the client have not ended yet.
    static qsizetype exchangesInFlight();
    /// The bodies, as JSON objects, of the requests to an endpoint ("/api_login.php").
    QList<QJsonObject> sent(const QByteArray &path) const;
    /// Waits until this many requests have come.
    void waitForRequests(int count) const;

    ScriptedServer server;
    QList<QUrl> opened;
};
