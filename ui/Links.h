#pragma once

#include <QString>
#include <QUrl>

/// Addresses that leave the app. Only https and mailto ever do.
namespace Links {

/// The address that a text forms, read as tolerantly as a browser reads it: blanks inside are escaped. Empty when it
/// forms none, or one that may not leave the app.
QUrl fromText(const QString &text);

/// Hands the address to the system: a browser, a mail program. What comes of it is not known. Does nothing for
/// an address that `fromText` would refuse.
void open(const QUrl &url);

} // namespace Links
