#include "MarovendaTest.h"

#include <QGuiApplication>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

int runMarovendaCheck(const std::function<int()> &check, int argc, char *argv[])
{
    const QTemporaryDir home;
    for (const char *name : {"XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_RUNTIME_DIR"})
        qputenv(name, home.path().toUtf8());
    // As in the app's main function.
    qputenv("QV4_FORCE_INTERPRETER", "1");
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_QUICK_BACKEND", "software");
    qputenv("QTEST_DISABLE_STACK_DUMP", "1");
    qputenv("DBUS_SESSION_BUS_ADDRESS", "disabled:");
    for (const char *name : {"http_proxy", "https_proxy", "XDG_CURRENT_DESKTOP"})
        qunsetenv(name);
    QGuiApplication application(argc, argv);
    QGuiApplication::setApplicationName(u"marovenda-test"_s);
    const int code = check();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    return code;
}
