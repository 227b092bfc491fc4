#include "Customer.h"
#include "Scenarios.h"

#include <QEventLoop>
#include <QSocketNotifier>

#include <cstdio>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

QJsonObject goEverywhere(Handset &app, const QStringList &)
{
    constexpr auto look = 700ms;
    app.until([&] { return isAtLogin(app); });
    Handset::rest(500ms);
    signIn(app, u"ana@marovenda.example"_s);
    QJsonObject taken{{u"home"_s, ms(app.frameWith([&] { return isAtHome(app); }))}};
    Handset::rest(look);
    for (const Screen &screen : screens()) {
        const auto start = TimedApplication::now();
        enter(app, screen);
        taken[QString::fromLatin1(screen.name)] = ms(app.frameWith([] { return true; }) - start);
        Handset::rest(look);
        app.tap(app.control(screen.back));
        Handset::rest(look);
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
    enter(app, wanted);
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
