// Shows the window that the first argument names and ends with its first frame. A second argument is the way to draw.

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
    if (argc > 2)
        engine.setInitialProperties({{QStringLiteral("way"), QString::fromLocal8Bit(argv[2])}});
    engine.load(QUrl(QString::fromLocal8Bit(argc > 1 ? argv[1] : "")));
    auto *const window = qobject_cast<QQuickWindow *>(engine.rootObjects().value(0));
    if (!window)
        return 1;
    QObject::connect(
        window, &QQuickWindow::frameSwapped, window, [] { std::_Exit(0); }, Qt::DirectConnection);
    return QGuiApplication::exec();
}
