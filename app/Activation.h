#pragma once

#include <QByteArray>

class QWindow;

/// How a start of the app that finds it open brings the open window to the front.
namespace Activation {

/// What the launcher has given this process, to show that its window may come to the front; empty where it gave
/// nothing. To be called before the application is made, which takes it out of the environment.
QByteArray token();

/// Brings a window to the front, from its minimised state too, with the token that a later start was given. False for
/// one that is closed.
bool bringToFront(QWindow &window, const QByteArray &token);

} // namespace Activation
