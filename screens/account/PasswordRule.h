#pragma once

#include <QString>

/// Returns whether the password contains a capital letter from A to Z and a special character. An underscore is a
/// special character; other letters, digits, combining marks and connectors, as Unicode defines them, are not.
bool isAllowedPassword(const QString &password);
