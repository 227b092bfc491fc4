#include "Activation.h"

#include <QWindow>

namespace {

// On Wayland a window needs a token to come to the front (https://wayland.app/protocols/xdg-activation-v1). Launchers
// set the first variable; older launchers set the second one, which holds the startup notification ID on X11.
constexpr auto activationToken = "XDG_ACTIVATION_TOKEN";
constexpr auto startupId = "DESKTOP_STARTUP_ID";

} // namespace

QByteArray Activation::token()
{
    const QByteArray token = qgetenv(activationToken);
    return token.isEmpty() ? qgetenv(startupId) : token;
}

bool Activation::bringToFront(QWindow &window, const QByteArray &token)
{
    if (!window.isVisible())
        return false;
    if (window.windowStates() & Qt::WindowMinimized)
        window.setWindowStates(window.windowStates() & ~Qt::WindowMinimized);
    window.raise();
    // Qt's Wayland plugin reads the token from the environment. Unset it afterwards: child processes must not inherit
    // it.
    if (!token.isEmpty())
        qputenv(activationToken, token);
    window.requestActivate();
    qunsetenv(activationToken);
    return true;
}
