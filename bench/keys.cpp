#include "Customer.h"
#include "Scenarios.h"

#include <QQmlComponent>

#include <map>
#include <memory>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr int blocks = 30;
constexpr int strokesInBlock = 10;

/// Adds the same field below another one, with the same text but bound to nothing.
std::unique_ptr<QQuickItem> unboundTwin(Handset &app, const QQuickItem *field)
{
    QQmlComponent component(&app.engine(), QUrl(u"qrc:/Marovenda/Handset/UnboundField.qml"_s));
    QObject *const made =
        component.createWithInitialProperties({{u"parent"_s, QVariant::fromValue(field->parentItem())},
                                               {u"width"_s, field->width()},
                                               {u"text"_s, field->property("text")}});
    if (!made)
        qFatal("%s", qUtf8Printable(component.errorString()));
    return std::unique_ptr<QQuickItem>(qobject_cast<QQuickItem *>(made));
}

} // namespace

QJsonObject typeName(Handset &app, const QStringList &)
{
    openProfile(app);
    QQuickItem *const name = app.item(u"nombre"_s);
    const auto twin = unboundTwin(app, name);
    std::map<QQuickItem *, QList<double>> times;
    for (int block = 0; block < 2 * blocks; ++block) {
        QQuickItem *const field = block % 2 ? twin.get() : name;
        field->forceActiveFocus(Qt::MouseFocusReason);
        Handset::rest(50ms);
        for (int turn = 0; turn < strokesInBlock; ++turn) {
            app.application().clear();
            strike(app, turn);
            app.frameWith([] { return true; });
            times[field].append(ms(app.application().total()));
        }
    }
    return {
        {u"most"_s, quantile(times[name], 0.99)},
        {u"unbound"_s, quantile(times[twin.get()], 0.99)},
        {u"median"_s, quantile(times[name], 0.5)},
        {u"unboundMedian"_s, quantile(times[twin.get()], 0.5)},
    };
}

QJsonObject writeEverything(Handset &app, const QStringList &arguments)
{
    const QString photo = arguments.value(0);
    const auto sinceClear = [&] { return ms(app.application().longest()); };
    app.until([&] { return isAtLogin(app); });
    const QJsonArray homes = signInOften(app, u"ana@marovenda.example"_s, 5);
    openProfile(app);
    pick(app, photo);
    QList<double> savings;
    for (int i = 0; i < 3; ++i) {
        Handset::rest(200ms);
        app.application().clear();
        save(app);
        // Include the shortening of the store's log.
        Handset::rest(1s);
        savings.append(sinceClear());
    }
    // The pauses are longer than the store takes to synchronise its log and to shorten it.
    app.item(u"nombre"_s)->forceActiveFocus(Qt::MouseFocusReason);
    Handset::rest(1s);
    app.application().clear();
    for (int turn = 0; turn < 20; ++turn) {
        strike(app, turn);
        Handset::rest(turn % 5 == 4 ? 1s : 50ms);
    }
    return {{u"homes"_s, homes}, {u"saving"_s, quantile(savings, 0.5)}, {u"typing"_s, sinceClear()}};
}
