#include "Activation.h"

#include <QWindow>

namespace {

// On Wayland only a token brings a window to the front (https://wayland.app/protocols/xdg-activation-v1). Launchers
// put it into the first of these, older ones into the second, where on X11 the startup notification's number stands.
constexpr auto activationToken = "XDG_ACTIVATION_TOKEN";
constexpr auto startupNumber = "DESKTOP_STARTUP_ID";

} // namespace

QByteArray Activation::token()
{
    const QByteArray token = qgetenv(activationToken);
    return token.isEmpty() ? qgetenv(startupNumber) : token;
}

bool Activation::bringToFront(QWindow &window, const QByteArray &token)
{
    if (!window.isVisible())
        return false;
    if (window.windowStates() & Qt::WindowMinimized)
        window.setWindowStates(window.windowStates() & ~Qt::WindowMinimized);
    window.raise();
    // Where Qt's Wayland plugin takes it from; no program that this one starts is to find it there.
    if (!token.isEmpty())
        qputenv(activationToken, token);
    window.requestActivate();
    qunsetenv(activationToken);
    return true;
}
