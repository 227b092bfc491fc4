// Shows a window and ends with its first frame.

#include "Modules.h"

#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQuickWindow>

#include <cstdlib>

int main(int argc, char *argv[])
{
    const QGuiApplication application(argc, argv);
    QGuiApplication::setApplicationName(QStringLiteral("marovenda-bench"));
    QQmlApplicationEngine engine;
    addModules(engine);
    engine.load(QUrl(QStringLiteral(WINDOW)));
    auto *const window = qobject_cast<QQuickWindow *>(engine.rootObjects().value(0));
    if (!window)
        return 1;
    QObject::connect(
        window, &QQuickWindow::frameSwapped, window, [] { std::_Exit(0); }, Qt::DirectConnection);
    return QGuiApplication::exec();
}
