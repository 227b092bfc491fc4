#include "Tables.h"

using namespace Qt::StringLiterals;
using namespace look;

namespace {

Table splash()
{
    return {
        {u"background"_s, {left(0), right(0), top(0), bottom(0)}},
        {u"logo"_s, {size(160, 160), centred()}},
        {u"spinner"_s, {below(u"logo"_s, 20 + 16), centred(), size(20, 20), balancedFrom(u"logo"_s, 0, 844)}},
        {u"credit"_s, {bottom(32), centred(), text(u"caption bold"_s, black), centredText()}},
    };
}

Table signIn()
{
    return {
        {u"logo"_s, {size(160, 160), centred()}},
        {u"Ingresa a tu panel logístico"_s,
         {below(u"logo"_s, 8 + 16), centred(), text(u"body"_s, grey), centredText()}},
        {u"email"_s, field(u"Ingresa a tu panel logístico"_s, 24 + 16, 32)},
        {u"pass"_s, field(u"email"_s, 16, 32)},
        {u"recuperar"_s, {below(u"pass"_s, 16), right(32), text(u"caption bold"_s, blue)}},
        {u"iniciarSesion"_s, mainButton(u"recuperar"_s, 16 + 16, u"body bold"_s, 32)},
        {u"registro"_s,
         {below(u"iniciarSesion"_s, 16 + 16), centred(), text(u"body bold"_s, blue),
          balancedFrom(u"logo"_s, bar, 844)}},
    };
}

Table signInRefused()
{
    return {
        {u"msg"_s, {below(u"iniciarSesion"_s, 16), left(32), right(32), text(u"caption"_s, red), centredText()}},
        {u"registro"_s, {below(u"msg"_s, 16 + 16), centred(), balancedFrom(u"logo"_s, bar, 844)}},
    };
}

Table recovery()
{
    return {
        {u"scrim"_s, {left(0), right(0), top(0), bottom(0), colour(faint(black, 0.2))}},
        {u"alertBox"_s, {centred(), shape(14, faint(white, 0.95)), balancedFrom(u"alertBox"_s, 0, 844)}},
        {u"alertBox/shape"_s, {left(60), right(60)}},
        {u"Recuperar Contraseña"_s, {centred(), text(u"headline"_s, black), centredText()}},
        {u"message"_s, {centred(), text(u"footnote"_s, black), centredText()}},
        {u"alertInput"_s, {inside(u"alertBox"_s, 16, -1, 16, -1), height(34)}},
        {u"cancelar"_s, {inside(u"alertBox"_s, 0, -1, 135, 0), height(44), text(u"body bold"_s, blue)}},
        {u"aceptar"_s, {inside(u"alertBox"_s, 135, -1, 0, 0), height(44), text(u"body"_s, blue)}},
        {u"split"_s, {size(1, 44), centred(), colour(separator), level(u"cancelar"_s)}},
    };
}

Table registration()
{
    return {
        {u"Crear Cuenta"_s, {top(bar + 24), centred(), text(u"largeTitle bold"_s, blue), centredText()}},
        {u"nom"_s, field(u"Crear Cuenta"_s, 16)},
        {u"email"_s, field(u"nom"_s, 16)},
        {u"direccion"_s, field(u"email"_s, 16)},
        {u"ciudad"_s, field(u"direccion"_s, 16)},
        {u"pass"_s, field(u"ciudad"_s, 16)},
        {u"registrar"_s, mainButton(u"pass"_s, 8 + 16)},
        {u"msg"_s, {below(u"registrar"_s, 16), left(24), right(24), text(u"caption"_s, red), centredText()}},
        {u"back"_s, {left(8), top(0), height(bar), symbol(u"chevron.left"_s, blue)}},
        {u"Atrás"_s, {text(u"body"_s, blue), level(u"back"_s)}},
    };
}

Table profile()
{
    const QString hint = u"Toca la imagen para cambiar foto"_s;
    return {
        {u"Mi Perfil"_s, {left(16), text(u"largeTitle bold"_s, black), balancedFrom(u"Mi Perfil"_s, bar, bar + 52)}},
        {u"avatar"_s, {size(100, 100), centred(), symbol(u"person.circle.fill"_s, blue)}},
        {hint, {below(u"avatar"_s, 16), centred(), text(u"caption"_s, grey), centredText()}},
        {u"nombre"_s, field(hint, 16 + 16)},
        {u"email"_s, field(u"nombre"_s, 16)},
        {u"guardar"_s, mainButton(u"email"_s, 12 + 16)},
        {u"msg"_s,
         {below(u"guardar"_s, 16), left(24), right(24), text(u"body"_s, blue), centredText(),
          balancedFrom(u"avatar"_s, bar + 52, 844)}},
    };
}

Table profileWithPhoto()
{
    return {
        {u"avatar"_s, {size(100, 100), centred()}},
        // A line 2 wide, centred on the circle.
        {u"ring"_s, {size(102, 102), inside(u"avatar"_s, -1, -1, -1, -1), centred(), level(u"avatar"_s)}},
    };
}

Table credits()
{
    return {
        {u"logo"_s, {size(140, 140), centred()}},
        {u"Corvandel"_s, {below(u"logo"_s, 24), centred(), text(u"title bold"_s, black), centredText()}},
        {u"Desarrollo de Software & IT Solutions"_s,
         {below(u"Corvandel"_s, 6), centred(), text(u"subheadline"_s, grey), centredText()}},
        {u"card"_s,
         {below(u"Desarrollo de Software & IT Solutions"_s, 24), left(24), right(24), shape(20, white, true),
          balancedFrom(u"logo"_s, 0, 844 - 24 - 54)}},
        {u"sitio"_s, {inside(u"card"_s, -1, 20, -1, -1), centred()}},
        {u"Sitio Web:"_s, {text(u"body bold"_s, black), level(u"sitio"_s)}},
        {u"corvandel.example"_s, {after(u"Sitio Web:"_s, 8), text(u"body bold"_s, blue), level(u"sitio"_s)}},
        {u"divider"_s, {below(u"sitio"_s, 16), inside(u"card"_s, 20, -1, 20, -1), height(1), colour(separator)}},
        {u"correo"_s, {below(u"divider"_s, 16), inside(u"card"_s, -1, -1, -1, 20), centred()}},
        {u"Correo:"_s, {text(u"body bold"_s, black), level(u"correo"_s)}},
        {u"hola@corvandel.example"_s, {after(u"Correo:"_s, 8), text(u"footnote bold"_s, blue), level(u"correo"_s)}},
        {u"volver"_s,
         {bottom(24), left(24), right(24), height(54), shape(20, blue), text(u"headline bold"_s, white),
          centredText()}},
    };
}

} // namespace

QList<SceneTable> accountTables()
{
    return {
        {"inicio", splash()},
        {"ingreso", signIn()},
        {"ingreso-error", signInRefused()},
        {"recuperar", recovery()},
        {"registro-error", registration()},
        {"perfil", profile()},
        {"perfil-foto", profileWithPhoto()},
        {"creditos", credits()},
    };
}
