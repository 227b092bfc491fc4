#pragma once

#include <QString>
#include <QUrl>

/// Links that the app opens in other programs. Only https and mailto links are allowed.
namespace Links {

/// Parses a link as tolerantly as a browser does: blanks inside it are escaped. Returns an empty URL if the text is
/// not a link, or one that is not allowed.
QUrl fromText(const QString &text);

/// Opens the link in the system's browser or mail program; failures are not reported. Does nothing for a link that
/// `fromText` would refuse.
void open(const QUrl &url);

} // namespace Links
