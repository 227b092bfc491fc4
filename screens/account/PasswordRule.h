#pragma once

#include <QString>

/// Whether a password may be chosen: it has a capital A to Z and a special character, which is anything but a letter,
/// digit, combining mark or connector as Unicode has them, or an underscore.
bool isAllowedPassword(const QString &password);
