#include "Artwork.h"
#include "Modules.h"
#include "PlatformSettings.h"

#include <QCommandLineParser>
#include <QGuiApplication>
#include <QIcon>
#include <QPixmap>
#include <QQmlApplicationEngine>
#include <QTimer>

using namespace Qt::StringLiterals;

int main(int argc, char *argv[])
{
    PlatformSettings::preferPortal();
    QGuiApplication application(argc, argv);
    QGuiApplication::setApplicationName(u"marovenda"_s);
    QGuiApplication::setApplicationDisplayName(u"Marovenda"_s);
    QGuiApplication::setApplicationVersion(QStringLiteral(MAROVENDA_VERSION));
    QGuiApplication::setDesktopFileName(u"marovenda"_s);

    QCommandLineParser options;
    options.addHelpOption();
    options.addVersionOption();
    if (!options.parse(QCoreApplication::arguments())) {
        qCritical("marovenda: %s See --help.", qUtf8Printable(options.errorText()));
        return 2;
    }
    options.process(application);
    if (!options.positionalArguments().isEmpty()) {
        qCritical("marovenda: unknown argument \"%s\"; see --help",
                  qUtf8Printable(options.positionalArguments().first()));
        return 2;
    }

    int code = 1;
    {
        QQmlApplicationEngine engine;
        addModules(engine);
        engine.load(QUrl(u"qrc:/Marovenda/App/MarovendaApp.qml"_s));
        // Painting it takes milliseconds, for which the window's first frame does not wait.
        QTimer::singleShot(
            0, [] { QGuiApplication::setWindowIcon(QPixmap::fromImage(Artwork::picture(u"icon"_s, 1))); });
        if (!engine.rootObjects().isEmpty())
            code = QGuiApplication::exec();
    }
    // View models whose page went with the engine.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    return code;
}
