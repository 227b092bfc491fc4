// Shows the window in the QML file that the first argument names. The second argument is the way to draw.

#include <QGuiApplication>
#include <QQmlApplicationEngine>

int main(int argc, char *argv[])
{
    const QGuiApplication application(argc, argv);
    QGuiApplication::setApplicationName(QStringLiteral("marovenda-bench"));
    QQmlApplicationEngine engine;
    engine.addImportPath(QStringLiteral("qrc:/"));
    if (argc > 2)
        engine.setInitialProperties({{QStringLiteral("way"), QString::fromLocal8Bit(argv[2])}});
    engine.load(QUrl(QString::fromLocal8Bit(argc > 1 ? argv[1] : "")));
    return engine.rootObjects().isEmpty() ? 1 : QGuiApplication::exec();
}
