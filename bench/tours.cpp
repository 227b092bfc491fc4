#include "Customer.h"
#include "Scenarios.h"

#include <QEventLoop>
#include <QPropertyAnimation>
#include <QSet>

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// Scrolls from the top at a constant speed. Returns how many frames of a display with 60 Hz passed, and how many of
/// them the window left out; also its work for a frame.
QJsonObject scrollSteadily(const Handset &app, QQuickItem *rows)
{
    constexpr std::chrono::milliseconds time = 4s;
    constexpr double pointsPerSecond = 3000;
    constexpr std::chrono::nanoseconds frame = std::chrono::nanoseconds(1s) / 60;
    const double top = rows->property("originY").toDouble();
    QPropertyAnimation scrolling(rows, "contentY");
    scrolling.setStartValue(top);
    scrolling.setEndValue(top + pointsPerSecond * time / 1s);
    scrolling.setDuration(static_cast<int>(time.count()));
    QEventLoop loop;
    QObject::connect(&scrolling, &QPropertyAnimation::finished, &loop, &QEventLoop::quit);
    const auto start = TimedApplication::now();
    int drawn = 0;
    QSet<qint64> shown;
    QObject::connect(&app.window(), &QQuickWindow::frameSwapped, &loop, [&] {
        ++drawn;
        shown.insert((TimedApplication::now() - start) / frame);
    });
    app.application().clear();
    scrolling.start();
    loop.exec();
    const qint64 due = (TimedApplication::now() - start) / frame;
    return {{u"due"_s, due},
            {u"dropped"_s, std::max<qint64>(0, due - shown.size())},
            {u"work"_s, ms(app.application().total()) / std::max(1, drawn)}};
}

} // namespace

QJsonObject tour(Handset &app, const QStringList &arguments)
{
    constexpr int few = 200;
    constexpr int many = 10'000;
    QJsonObject stalls;
    const auto step = [&](const QString &name, const auto &act) {
        act();
        Handset::rest(500ms);
        stalls[name] = ms(app.application().longest());
        app.application().clear();
    };
    const auto customerOf = [](int packages) { return QString::number(packages) + "@marovenda.example"_L1; };
    const auto goBack = [&] {
        app.tap(app.control(u"Atrás"_s));
        app.until([&] { return isAtHome(app); });
    };
    QQuickItem *rows = nullptr;
    QJsonObject scrolled;
    step(u"start"_s, [&] { app.until([&] { return isAtLogin(app); }); });
    step(u"sign-in and dashboard"_s, [&] {
        signIn(app, customerOf(few));
        app.waitForHome(few);
    });
    signOut(app);
    const QJsonArray homes = signInOften(app, customerOf(few), 5);
    app.waitForHome(few);
    app.application().clear();
    step(u"list of 200"_s, [&] { openPackages(app, few); });
    step(u"back"_s, goBack);
    step(u"form"_s, [&] {
        enter(app, u"quotation"_s);
        app.until([&] { return app.maybeItem(u"descripcion"_s) != nullptr; });
    });
    step(u"typing"_s, [&] {
        app.tap(app.item(u"descripcion"_s));
        for (int turn = 0; turn < 20; ++turn) {
            strike(app, turn);
            Handset::rest(50ms);
        }
    });
    goBack();
    openProfile(app);
    app.application().clear();
    step(u"picking a photo"_s, [&] { pick(app, arguments.value(0)); });
    step(u"saving it"_s, [&] { save(app); });
    goBack();
    Handset::rest(500ms);
    signOut(app);
    Handset::rest(500ms);
    app.application().clear();
    step(u"dashboard of 10,000"_s, [&] {
        signIn(app, customerOf(many));
        app.waitForHome(many);
    });
    step(u"list of 10,000"_s, [&] { rows = openPackages(app, many); });
    step(u"scrolling"_s, [&] { scrolled = scrollSteadily(app, rows); });
    const double rowHeight = rows->property("contentHeight").toDouble() / many;
    return {{u"stalls"_s, stalls}, {u"homes"_s, homes}, {u"scrolled"_s, scrolled}, {u"rowHeight"_s, rowHeight}};
}

QJsonObject scrollPlainList(Handset &app, const QStringList &arguments)
{
    app.window().setProperty("rowHeight", arguments.value(0).toDouble());
    app.window().setProperty("rowCount", 10'000);
    Handset::rest(1s);
    return scrollSteadily(app, app.item(u"rows"_s));
}
