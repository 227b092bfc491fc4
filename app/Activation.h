#pragma once

#include <QByteArray>

class QWindow;

/// Brings the app's window to the front when the app is started again.
namespace Activation {

/// Returns the launcher's token, which permits this process to bring a window to the front; empty if there is none.
/// Call it before creating the application, which removes the token from the environment.
QByteArray token();

/// Brings a window to the front, even if it is minimised, using the token of the later start. Returns false if the
/// window is closed.
bool bringToFront(QWindow &window, const QByteArray &token);

} // namespace Activation
