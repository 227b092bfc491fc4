#pragma once

#include <QJsonObject>
#include <QList>
#include <QStringList>

#include <chrono>

class Handset;

// Each scenario uses the app and returns its measurements, with times in ms and memory in bytes.

/// Opens the list with this number of packages and closes it again.
QJsonObject openList(Handset &app, const QStringList &arguments);
/// Scrolls the list with this number of packages, at several places from its top to its end.
QJsonObject scrollList(Handset &app, const QStringList &arguments);
/// Types into the name field of the profile, and by turns into the same field that is bound to nothing.
QJsonObject typeName(Handset &app, const QStringList &arguments);
/// Does all that writes to the store: signs in and out, saves this photo, and types with pauses.
QJsonObject writeEverything(Handset &app, const QStringList &arguments);
/// Picks a photo in the profile and saves it.
QJsonObject pickPhoto(Handset &app, const QStringList &arguments);
/// Signs in and opens every screen.
QJsonObject goEverywhere(Handset &app, const QStringList &arguments);
/// Does what is heavy, with this photo, and returns the longest stall of each step. The server must be one whose
/// customers choose their number of packages.
QJsonObject tour(Handset &app, const QStringList &arguments);
/// Scrolls a plain list whose rows have this height.
QJsonObject scrollPlainList(Handset &app, const QStringList &arguments);
/// Opens a screen, prints "ready", and stays there until there is something to read on standard input, or it is
/// closed.
QJsonObject stay(Handset &app, const QStringList &arguments);

double ms(std::chrono::nanoseconds time);
/// Returns a quantile, where `share` is 0.5 for the median. `values` must not be empty.
double quantile(QList<double> values, double share);
