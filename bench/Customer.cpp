#include "Customer.h"

#include "PhotoView.h"
#include "Scenarios.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

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

bool isAtLogin(const Handset &app) { return !isAtHome(app) && app.maybeItem(u"iniciarSesion"_s); }

bool isAtHome(const Handset &app) { return app.maybeItem(u"paqueteCount"_s) != nullptr; }

void signIn(const Handset &app, const QString &email)
{
    QObject *const login = Handset::viewModelOf(app.item(u"iniciarSesion"_s));
    login->setProperty("email", email);
    login->setProperty("pass", u"secret"_s);
    app.tap(app.item(u"iniciarSesion"_s));
}

void signOut(const Handset &app)
{
    app.tap(app.item(u"cerrarSesion"_s));
    app.until([&] { return isAtLogin(app); });
}

QJsonArray signInOften(const Handset &app, const QString &email, int times)
{
    QJsonArray homes;
    for (int i = 0; i < times; ++i) {
        if (i > 0)
            signOut(app);
        Handset::rest(400ms);
        signIn(app, email);
        homes.append(ms(app.frameWith([&] { return isAtHome(app); })));
        Handset::rest(400ms);
    }
    return homes;
}

void enter(const Handset &app, const Screen &screen)
{
    if (screen.tile.isEmpty())
        return app.tap(app.item(screen.itemName));
    QQuickItem *const tile = app.control(screen.tile);
    tile->forceActiveFocus(Qt::TabFocusReason);
    app.tap(tile);
}

void enter(const Handset &app, const QString &name)
{
    for (const Screen &screen : screens()) {
        if (name == QLatin1StringView(screen.name))
            enter(app, screen);
    }
}

QQuickItem *openPackages(const Handset &app, int packages)
{
    app.tap(app.item(u"paqueteCount"_s));
    app.until([&] { return packagesOf(app, packages) != nullptr; });
    return packagesOf(app, packages);
}

QQuickItem *packagesOf(const Handset &app, int packages)
{
    QQuickItem *const rows = app.maybeItem(u"rows"_s);
    return rows && rows->property("count").toInt() == packages ? rows : nullptr;
}

void openProfile(const Handset &app)
{
    app.until([&] { return isAtHome(app); });
    Handset::rest(600ms);
    enter(app, u"profile"_s);
    app.until([&] { return app.maybeItem(u"guardar"_s) != nullptr; });
    Handset::rest(600ms);
}

void strike(const Handset &app, int turn)
{
    app.type(turn % 2 ? Qt::Key_Backspace : Qt::Key_A, turn % 2 ? u"\b"_s : u"a"_s);
}

void pick(const Handset &app, const QString &file)
{
    auto *const picker = app.window().findChild<QQuickItem *>(u"picker"_s);
    if (!picker)
        qFatal("There is no picker.");
    app.application().time(
        [&] { QMetaObject::invokeMethod(picker, "choose", Q_ARG(QUrl, QUrl::fromLocalFile(file))); });
    QObject *const viewModel = Handset::viewModelOf(app.item(u"guardar"_s));
    app.until([&] {
        const PhotoView *const photo = photoIn(app.item(u"avatar"_s));
        return photo && photo->decoded() && !viewModel->property("avatarBase64").toString().isEmpty();
    });
}

void save(const Handset &app)
{
    QObject *const viewModel = Handset::viewModelOf(app.item(u"guardar"_s));
    viewModel->setProperty("msg", QString());
    app.tap(app.item(u"guardar"_s));
    app.until([&] { return !viewModel->property("msg").toString().isEmpty(); });
}
