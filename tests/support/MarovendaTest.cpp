#include "MarovendaTest.h"

#include <QGuiApplication>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

int runMarovendaTest(QObject &subject, int argc, char *argv[])
{
    const QTemporaryDir home;
    for (const char *name : {"XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME"})
        qputenv(name, home.path().toUtf8());
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_QUICK_BACKEND", "software");
    qputenv("DBUS_SESSION_BUS_ADDRESS", "disabled:");
    for (const char *name : {"http_proxy", "https_proxy", "XDG_CURRENT_DESKTOP"})
        qunsetenv(name);
    QGuiApplication application(argc, argv);
    QGuiApplication::setApplicationName(u"marovenda-test"_s);
    const int code = QTest::qExec(&subject, argc, argv);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    return code;
}
