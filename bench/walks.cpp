#include "Handset.h"
#include "Scenarios.h"

#include <QEventLoop>
#include <QSocketNotifier>

#include <cstdio>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

struct Screen {
    const char *name;
    /// The text of the tile, or the name of the item, that opens the screen.
    QString tile;
    QString itemName;
    QString back = u"Atrás"_s;
};

const QList<Screen> &screens()
{
    static const QList<Screen> all{
        {"mailbox", u"Casillero"_s, {}, u"Volver al Panel"_s},
        {"quotation", u"Cotizar"_s, {}},
        {"vehicle", u"Autos"_s, {}},
        {"profile", u"Perfil"_s, {}},
        {"credits", u"Dev"_s, {}, u"Volver al Panel"_s},
        {"packages", {}, u"paqueteCount"_s},
        {"quotations", {}, u"cotizacionCount"_s},
    };
    return all;
}

/// Opens a screen, even if its tile is outside the visible part of the row.
void enter(Handset &app, const Screen &screen)
{
    if (screen.tile.isEmpty())
        return app.tap(app.item(screen.itemName));
    QQuickItem *const tile = app.control(screen.tile);
    tile->forceActiveFocus(Qt::TabFocusReason);
    app.tap(tile);
}

bool isAtLogin(Handset &app)
{
    return app.maybeItem(u"paqueteCount"_s) == nullptr && app.maybeItem(u"iniciarSesion"_s);
}

} // namespace

QJsonObject goEverywhere(Handset &app, const QStringList &arguments)
{
    const int times = arguments.value(0).toInt();
    app.until([&] { return isAtLogin(app); });
    Handset::rest(500ms);
    QObject *const login = Handset::viewModelOf(app.item(u"iniciarSesion"_s));
    login->setProperty("email", u"ana@marovenda.example"_s);
    login->setProperty("pass", u"secret"_s);
    app.tap(app.item(u"iniciarSesion"_s));
    QJsonObject taken{{u"home"_s, ms(app.frameWith([&] { return app.maybeItem(u"paqueteCount"_s); }))}};
    Handset::rest(1500ms);
    for (const Screen &screen : screens()) {
        QList<double> all;
        for (int i = 0; i < times; ++i) {
            const auto start = TimedApplication::now();
            enter(app, screen);
            all.append(ms(app.frameWith([&] { return true; }) - start));
            Handset::rest(1s);
            app.tap(app.control(screen.back));
            Handset::rest(1s);
        }
        taken[QString::fromLatin1(screen.name)] = quantile(all, 0.5);
    }
    return taken;
}

QJsonObject stay(Handset &app, const QStringList &arguments)
{
    const QString wanted = arguments.value(0);
    if (wanted == u"login"_s || wanted == u"registration"_s)
        app.until([&] { return isAtLogin(app); });
    else
        app.waitForHome(arguments.value(1).toInt());
    Handset::rest(2s);
    if (wanted == u"registration"_s)
        app.tap(app.control(u"¿No tienes cuenta? Regístrate aquí"_s));
    for (const Screen &screen : screens()) {
        if (wanted == QLatin1String(screen.name))
            enter(app, screen);
    }
    Handset::rest(2s);
    app.window().contentItem()->forceActiveFocus();
    Handset::rest(1s);
    std::puts("ready");
    std::fflush(stdout);
    QSocketNotifier input(0, QSocketNotifier::Read);
    QEventLoop loop;
    QObject::connect(&input, &QSocketNotifier::activated, &loop, &QEventLoop::quit);
    loop.exec();
    return {};
}
