// Runs the app with a timed main thread: bench_app ADDRESS SCENARIO argument...
// ADDRESS is the base address of the service; the store is in XDG_DATA_HOME. Prints one line of JSON.

#include "Handset.h"
#include "Scenarios.h"
#include "Session.h"
#include "TestDeployment.h"

#include <QFile>
#include <QJsonDocument>
#include <QUrl>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>

using namespace Qt::StringLiterals;

double ms(std::chrono::nanoseconds time) { return std::chrono::duration<double, std::milli>(time).count(); }

double quantile(QList<double> values, double share)
{
    std::ranges::sort(values);
    return values[static_cast<qsizetype>(share * static_cast<double>(values.size() - 1))];
}

namespace {

/// Stores a signed-in customer, with a photo if a file is given.
void store(const QString &photo)
{
    Session &session = Session::instance();
    session.setUserId(42);
    session.setUserNombre(u"Ana María Batista de Arosemena"_s);
    session.setUserEmail(u"ana@marovenda.example"_s);
    if (photo.isEmpty())
        return;
    QFile file(photo);
    if (!file.open(QFile::ReadOnly))
        qFatal("The photo cannot be read.");
    session.setUserAvatarData(file.readAll());
    // Wait until the session has shortened the store's log.
    Handset::rest(std::chrono::seconds(2));
}

} // namespace

int main(int argc, char *argv[])
{
    // As in the app's main function.
    qputenv("QV4_FORCE_INTERPRETER", "1");
    TimedApplication application(argc, argv);
    QGuiApplication::setApplicationName(u"marovenda"_s);
    const QStringList arguments = QGuiApplication::arguments();
    TestDeployment::values().baseUrl = arguments.value(1);
    const std::map<QString, QJsonObject (*)(Handset &, const QStringList &)> scenarios{
        {u"list"_s, openList},
        {u"scroll"_s, scrollList},
        {u"type"_s, typeName},
        {u"write"_s, writeEverything},
        {u"pick"_s, pickPhoto},
        {u"walk"_s, goEverywhere},
        {u"tour"_s, tour},
        {u"stay"_s, stay},
        {u"plain"_s, scrollPlainList},
    };
    const QString name = arguments.value(2);
    if (name == u"store"_s) {
        store(arguments.value(3));
        return EXIT_SUCCESS;
    }
    const auto scenario = scenarios.find(name);
    if (scenario == scenarios.end())
        qFatal("There is no such scenario.");
    Handset app(application);
    // A plain window to compare with contains nothing of the app.
    application.time([&] {
        if (name == u"plain"_s)
            app.open(QUrl(u"qrc:/Marovenda/Handset/PlainList.qml"_s));
        else
            app.open();
    });
    const QJsonObject taken = scenario->second(app, arguments.sliced(3));
    std::puts(QJsonDocument(taken).toJson(QJsonDocument::Compact).constData());
    std::fflush(stdout);
    // Skip the shutdown, which is not measured.
    std::_Exit(EXIT_SUCCESS);
}
