#include "Handset.h"
#include "PhotoView.h"
#include "Scenarios.h"

#include <QUrl>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr int strokes = 200;

void openProfile(Handset &app)
{
    app.until([&] { return app.maybeItem(u"paqueteCount"_s) != nullptr; });
    Handset::rest(1s);
    app.tap(app.control(u"Perfil"_s));
    app.until([&] { return app.maybeItem(u"guardar"_s) != nullptr; });
    Handset::rest(1s);
}

PhotoView *photoIn(QQuickItem *from)
{
    if (auto *const view = qobject_cast<PhotoView *>(from))
        return view;
    for (QQuickItem *const child : from->childItems()) {
        if (PhotoView *const view = photoIn(child))
            return view;
    }
    return nullptr;
}

} // namespace

QJsonObject typeName(Handset &app, const QStringList &)
{
    openProfile(app);
    app.tap(app.item(u"nombre"_s));
    Handset::rest(500ms);
    QList<double> times;
    QList<double> handling;
    for (int i = 0; i < strokes; ++i) {
        app.application().clear();
        const auto start = TimedApplication::now();
        app.type(i % 2 ? Qt::Key_Backspace : Qt::Key_A, i % 2 ? u"\b"_s : u"a"_s);
        const auto handled = TimedApplication::now() - start;
        app.frameWith([] { return true; });
        handling.append(ms(handled));
        times.append(ms(app.application().total()));
    }
    return {
        {u"keyMost"_s, quantile(handling, 0.99)},
        {u"keyMedian"_s, quantile(handling, 0.5)},
        {u"most"_s, quantile(times, 0.99)},
        {u"median"_s, quantile(times, 0.5)},
    };
}

QJsonObject pickPhoto(Handset &app, const QStringList &arguments)
{
    openProfile(app);
    QQuickItem *const picker = app.item(u"nombre"_s)->window()->findChild<QQuickItem *>(u"picker"_s);
    if (!picker)
        qFatal("There is no picker.");
    QObject *const viewModel = Handset::viewModelOf(app.item(u"guardar"_s));
    TimedApplication &application = app.application();

    application.clear();
    const auto start = TimedApplication::now();
    QMetaObject::invokeMethod(picker, "choose", Q_ARG(QUrl, QUrl::fromLocalFile(arguments.value(0))));
    const auto call = TimedApplication::now() - start;
    app.until([&] {
        const PhotoView *const photo = photoIn(app.item(u"avatar"_s));
        return photo && photo->decoded() && !viewModel->property("avatarBase64").toString().isEmpty();
    });
    Handset::rest(100ms);
    const double picking = ms(std::max(call, application.longest()));

    QString text = viewModel->property("avatarBase64").toString();
    const auto before = TimedApplication::now();
    text.detach();
    const double copying = ms(TimedApplication::now() - before);

    application.clear();
    const auto press = TimedApplication::now();
    app.tap(app.item(u"guardar"_s));
    const auto pressed = TimedApplication::now() - press;
    app.until([&] { return !viewModel->property("msg").toString().isEmpty(); });
    // Include the shortening of the store's log.
    Handset::rest(2s);
    return {
        {u"picking"_s, picking},
        {u"copying"_s, copying},
        {u"saving"_s, ms(std::max(pressed, application.longest()))},
        {u"pressed"_s, ms(pressed)},
        {u"said"_s, viewModel->property("msg").toString()},
    };
}
