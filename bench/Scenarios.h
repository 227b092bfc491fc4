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
/// Types into the name field of the profile.
QJsonObject typeName(Handset &app, const QStringList &arguments);
/// Picks a photo in the profile and saves it.
QJsonObject pickPhoto(Handset &app, const QStringList &arguments);
/// Signs in and opens every screen.
QJsonObject goEverywhere(Handset &app, const QStringList &arguments);
/// Opens a screen, prints "ready", and stays there until there is something to read on standard input, or it is
/// closed.
QJsonObject stay(Handset &app, const QStringList &arguments);

double ms(std::chrono::nanoseconds time);
/// Returns a quantile, where `share` is 0.5 for the median. `values` must not be empty.
double quantile(QList<double> values, double share);
