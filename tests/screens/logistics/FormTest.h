#pragma once

#include "ServiceTest.h"
#include "Session.h"
#include "TestScreen.h"

#include <QTest>

/// What the tests of the logistics screens share: a signed-in customer, and the way to fill a form.
class FormTest : public ServiceTest {
protected:
    void signIn(qint64 id = 42)
    {
        ServiceTest::init();
        Session::instance().setUserId(id);
    }
    static QString msg(TestScreen &screen) { return screen.find(QStringLiteral("msg"))->property("text").toString(); }
    static QString text(TestScreen &screen, const char *field)
    {
        return screen.find(QString::fromLatin1(field))->property("text").toString();
    }
    static void fill(TestScreen &screen, const char *field, const QString &text)
    {
        screen.type(screen.find(QString::fromLatin1(field)), text);
    }
    static void press(TestScreen &screen) { screen.tap(screen.find(QStringLiteral("enviar"))); }
    /// Replies that are no success, with what is special about each.
    static void addFailures()
    {
        QTest::addColumn<QByteArray>("reply");
        QTest::addColumn<int>("status");
        QTest::newRow("no bytes") << QByteArray() << 200;
        QTest::newRow("not JSON") << QByteArray("<html>") << 200;
        QTest::newRow("empty object") << QByteArray("{}") << 200;
        QTest::newRow("null status") << QByteArray(R"({"status":null,"message":"Hola"})") << 200;
        QTest::newRow("number") << QByteArray(R"({"status":1})") << 200;
        QTest::newRow("capitals") << QByteArray(R"({"status":"SUCCESS","message":"Hola"})") << 200;
        QTest::newRow("other word") << QByteArray(R"({"status":"error","message":"Hola"})") << 200;
        QTest::newRow("HTTP error") << QByteArray(R"({"status":"error"})") << 500;
    }
};
