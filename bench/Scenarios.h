#pragma once

#include <QJsonObject>
#include <QList>
#include <QStringList>

#include <chrono>

class Handset;

// Each uses the app in one way and tells what it took, times in ms and memory in bytes.

/// Opens the list of so many packages and closes it again.
QJsonObject openList(Handset &app, const QStringList &arguments);
/// Scrolls the list of so many packages at stations from its top to its end.
QJsonObject scrollList(Handset &app, const QStringList &arguments);
/// Types into the name of the profile.
QJsonObject typeName(Handset &app, const QStringList &arguments);
/// Picks a photo in the profile and saves it.
QJsonObject pickPhoto(Handset &app, const QStringList &arguments);
/// Signs in, and opens every screen.
QJsonObject goEverywhere(Handset &app, const QStringList &arguments);
/// Stays on a screen until the standard input ends, once it has said "ready".
QJsonObject stay(Handset &app, const QStringList &arguments);

/// In ms.
double ms(std::chrono::nanoseconds time);
/// The value that this share of the values does not exceed, of at least one.
double quantile(QList<double> values, double share);
