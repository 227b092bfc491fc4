#include "Customer.h"
#include "Scenarios.h"

using namespace std::chrono_literals;

QJsonObject pickPhoto(Handset &app, const QStringList &arguments)
{
    openProfile(app);
    TimedApplication &application = app.application();
    application.clear();
    pick(app, arguments.value(0));
    Handset::rest(100ms);
    const double picking = ms(application.longest());

    QString text = Handset::viewModelOf(app.item(QStringLiteral("guardar")))->property("avatarBase64").toString();
    const auto before = TimedApplication::now();
    text.detach();
    const double copying = ms(TimedApplication::now() - before);

    application.clear();
    save(app);
    // Include the shortening of the store's log.
    Handset::rest(2s);
    return {
        {QStringLiteral("picking"), picking},
        {QStringLiteral("copying"), copying},
        {QStringLiteral("saving"), ms(application.longest())},
    };
}
