#include "ApiClient.h"
#include "Customer.h"
#include "FreedMemory.h"
#include "Records.h"
#include "Scenarios.h"
#include "ServiceRequests.h"
#include "TestDeployment.h"

#include <QEventLoop>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto freeing = 1500ms;

QByteArray fetched()
{
    QByteArray body;
    QEventLoop loop;
    sendHttp(*ServiceRequests::listing(TestDeployment::values().baseUrl, 42), [&](const HttpReply &reply) {
        body = reply.body;
        loop.quit();
    });
    loop.exec();
    return body;
}

/// Returns the median time of decoding alone. Like the app, each decoding has to request memory from the system.
double decodingAlone(const QByteArray &bytes)
{
    QList<double> times;
    for (int i = 0; i < 7; ++i) {
        QByteArray copy(bytes);
        copy.detach();
        returnFreedMemory();
        const auto start = TimedApplication::now();
        const auto record = Json::readAndFree<DashboardResponse>(std::move(copy));
        times.append(ms(TimedApplication::now() - start));
        if (!record)
            qFatal("The listing cannot be read.");
    }
    return quantile(times, 0.5);
}

} // namespace

QJsonObject openList(Handset &app, const QStringList &arguments)
{
    const int packages = arguments.value(0).toInt();
    const auto home = app.frameWith([&] {
        const QQuickItem *const count = app.maybeItem(u"paqueteCount"_s);
        return count && count->property("count").toInt() == packages;
    });
    Handset::rest(freeing);
    const qint64 before = memory("VmRSS:");
    TimedApplication &application = app.application();
    application.clear();
    app.tap(app.item(u"paqueteCount"_s));
    const auto shown = app.frameWith([&] { return packagesOf(app, packages) != nullptr; });
    QList<double> jobs;
    for (const auto &job : application.jobs())
        jobs.append(ms(job));
    std::ranges::sort(jobs, std::greater());
    Handset::rest(freeing);
    const qint64 open = memory("VmRSS:");
    app.tap(app.control(u"Atrás"_s));
    app.waitForHome(packages);
    Handset::rest(2 * freeing);
    const qint64 closed = memory("VmRSS:");
    const QByteArray bytes = fetched();
    const double decoding = decodingAlone(bytes);
    return {
        {u"home"_s, ms(home)},
        {u"shown"_s, ms(shown)},
        {u"decoding"_s, decoding},
        {u"bytes"_s, bytes.size()},
        // The longest event is the one that decodes, unless decoding takes less time than another event.
        {u"stall"_s, std::max(jobs.value(0) - decoding, jobs.value(1))},
        {u"held"_s, open - before},
        {u"kept"_s, closed - before},
    };
}

QJsonObject scrollList(Handset &app, const QStringList &arguments)
{
    const int packages = arguments.value(0).toInt();
    const int frames = arguments.value(1).toInt();
    app.waitForHome(packages);
    QQuickItem *const rows = openPackages(app, packages);
    Handset::rest(freeing);

    // The speed of a strong flick: 6,000 points a second.
    constexpr double step = 100;
    const double top = rows->property("originY").toDouble();
    QList<double> times;
    QList<double> jumps;
    const int stations = 10;
    for (int station = 0; station < stations; ++station) {
        const double length = rows->property("contentHeight").toDouble() - rows->height();
        double y = top + length * station / stations;
        for (int frame = 0; frame <= frames / stations; ++frame, y += step) {
            // Start again at the top of a short list.
            const double place = top + std::fmod(y - top, length);
            app.application().clear();
            const auto start = TimedApplication::now();
            rows->setProperty("contentY", place);
            app.window().update();
            const auto moved = TimedApplication::now() - start;
            app.frameWith([] { return true; });
            (frame == 0 || place < top + step ? jumps : times).append(ms(moved + app.application().longest()));
        }
    }
    return {
        {u"median"_s, quantile(times, 0.5)},
        {u"most"_s, quantile(times, 0.99)},
        {u"jump"_s, quantile(jumps, 1)},
        {u"frames"_s, times.size()},
        {u"ratio"_s, app.window().effectiveDevicePixelRatio()},
    };
}
