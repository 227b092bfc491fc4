#include "Activation.h"
#include "Artwork.h"
#include "HeldKeys.h"
#include "Modules.h"
#include "OnlyInstance.h"
#include "PlatformSettings.h"
#include "Session.h"

#include <QCommandLineParser>
#include <QGuiApplication>
#include <QIcon>
#include <QPixmap>
#include <QQmlApplicationEngine>
#include <QTimer>
#include <QWindow>

#include <cstdio>

using namespace Qt::StringLiterals;

int main(int argc, char *argv[])
{
    // Qt 6.4's compiler for JavaScript crashes if memory is collected while a function that it has compiled calls a
    // method (QV4::MemoryManager::collectFromJSStack). The layouts are compiled when the app is built. See
    // https://doc.qt.io/qt-6/qtqml-javascript-finetuning.html
    qputenv("QV4_FORCE_INTERPRETER", "1");
    PlatformSettings::preferPortal();
    const QByteArray activationToken = Activation::token();
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

    OnlyInstance instance(Session::usersDirectory());
    switch (instance.start(activationToken)) {
    case OnlyInstance::Start::First:
        break;
    case OnlyInstance::Start::AnotherWasRaised:
        return 0;
    case OnlyInstance::Start::Unanswered:
        std::fputs("marovenda: the app is already running, but does not answer\n", stderr);
        return 3;
    }

    // The splash needs it, and the main thread has enough to do until then.
    Artwork::decodeAhead(u"background"_s, Artwork::ratioFor(application.devicePixelRatio()));

    const HeldKeys heldKeys;
    int code = 1;
    {
        QQmlApplicationEngine engine;
        addModules(engine);
        instance.setRaise([&engine](const QByteArray &token) {
            auto *const window = qobject_cast<QWindow *>(engine.rootObjects().value(0));
            return window && Activation::bringToFront(*window, token);
        });
        engine.load(QUrl(u"qrc:/Marovenda/App/MarovendaApp.qml"_s));
        // Painting the icon takes milliseconds, so do it after the window's first frame.
        QTimer::singleShot(
            0, [] { QGuiApplication::setWindowIcon(QPixmap::fromImage(Artwork::picture(u"icon"_s, 1))); });
        if (!engine.rootObjects().isEmpty())
            code = QGuiApplication::exec();
    }
    // Delete the view models whose pages were destroyed with the engine.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    Session::instance().finish();
    return code;
}
