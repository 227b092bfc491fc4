#pragma once

#include "Handset.h"

#include <QJsonArray>

// What a customer does with the app.

struct Screen {
    const char *name;
    /// The text of the tile, or the name of the item, that opens the screen.
    QString tile;
    QString itemName;
    QString back = QStringLiteral("Atrás");
};

/// The screens that the dashboard opens.
const QList<Screen> &screens();

bool isAtLogin(const Handset &app);
bool isAtHome(const Handset &app);
/// Sends the form of the login screen.
void signIn(const Handset &app, const QString &email);
void signOut(const Handset &app);
/// Signs in and out by turns, at last in. Returns when each first frame of the dashboard was finished, in ms.
QJsonArray signInOften(const Handset &app, const QString &email, int times);

/// Opens a screen, even if its tile is outside the visible part of the row.
void enter(const Handset &app, const Screen &screen);
void enter(const Handset &app, const QString &name);
/// Opens the list of packages from the dashboard, and returns it when it has this number of rows.
QQuickItem *openPackages(const Handset &app, int packages);
/// Returns the visible list if it has this number of rows.
QQuickItem *packagesOf(const Handset &app, int packages);
/// Waits for the dashboard and opens the profile.
void openProfile(const Handset &app);

/// Presses and releases a key, by turns of a letter and of the one that deletes it.
void strike(const Handset &app, int turn);
/// Picks a photo in the profile, and waits until it is shown and ready to be sent.
void pick(const Handset &app, const QString &file);
/// Saves the profile, and waits for the reply.
void save(const Handset &app);
