#pragma once

#include <QByteArray>
#include <QString>

// Passwords are stored as argon2id hashes; each hash contains its salt and limits. Both functions intentionally take
// some tens of milliseconds and 19 MiB of memory. Do not call them while holding a lock.

/// Returns the hash of a password. Throws std::bad_alloc if there is not enough memory.
QByteArray hashPassword(const QString &password);

/// Returns whether `hash` is the hash of `password`. An empty hash matches no password, but takes the same time, so
/// that the time does not reveal which e-mail addresses are registered.
bool isPassword(const QString &password, const QByteArray &hash);
