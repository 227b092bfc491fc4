// The app's screens with what is stored: "store FILE" stores a photo of somebody signed in, "start" shows the
// dashboard.

#include "Modules.h"
#include "PhotoView.h"
#include "Session.h"
#include "TestDeployment.h"

#include <QBuffer>
#include <QFile>
#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQuickWindow>
#include <QTimer>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

int store(const QString &path)
{
    QFile file(path);
    if (!file.open(QFile::ReadOnly))
        return 1;
    Session::instance().setUserAvatarData(file.readAll());
    Session::instance().setUserId(42);
    return 0;
}

QByteArray goodPicture()
{
    QImage image(8, 8, QImage::Format_RGB32);
    image.fill(Qt::red);
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "png");
    return buffer.data();
}

/// The one that shows the customer's photo; null while the splash is on show.
PhotoView *photoOf(QQuickItem *from)
{
    if (auto *const view = qobject_cast<PhotoView *>(from))
        return view;
    for (QQuickItem *const child : from->childItems()) {
        if (PhotoView *const view = photoOf(child))
            return view;
    }
    return nullptr;
}

/// Prints whether the dashboard has a photo to show.
int start()
{
    QQmlApplicationEngine engine;
    addModules(engine);
    engine.load(QUrl(u"qrc:/Marovenda/App/MarovendaApp.qml"_s));
    auto *const window = qobject_cast<QQuickWindow *>(engine.rootObjects().value(0));
    if (!window)
        return 1;
    QQuickItem *const screens = window->contentItem()->childItems().constFirst();
    // Pictures are decoded in the order of their coming, those of one frame in any: once the second of these shows,
    // the stored one has been dealt with.
    PhotoView first(window->contentItem());
    PhotoView second(window->contentItem());
    const auto mark = [](PhotoView &view) {
        view.setSize({10, 10});
        view.setPhoto(goodPicture());
    };
    QTimer look;
    look.callOnTimeout([&] {
        if (photoOf(screens)) {
            look.stop();
            mark(first);
        }
    });
    look.start(10);
    QObject::connect(&first, &PhotoView::decodedChanged, [&] { mark(second); });
    QObject::connect(&second, &PhotoView::decodedChanged, [] { QGuiApplication::exit(); });
    QGuiApplication::exec();
    std::printf("%d\n", photoOf(screens)->decoded());
    return 0;
}

} // namespace

int main(int argc, char *argv[])
{
    TestDeployment::values().baseUrl = u"http://127.0.0.1:9/"_s;
    const QGuiApplication application(argc, argv);
    QGuiApplication::setApplicationName(u"marovenda-test"_s);
    const QStringList arguments = QGuiApplication::arguments().sliced(1);
    const int code = arguments.value(0) == u"store"_s ? store(arguments.value(1)) : start();
    // What the dashboard has put off to the next turn of the loop.
    QCoreApplication::sendPostedEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    return code;
}
