#pragma once

#include <QByteArray>
#include <QString>

// Passwords are kept as argon2id hashes, each with its own salt and limits inside. Both functions take some tens of
// milliseconds and 19 MiB of memory on purpose; call them outside of locks.

/// The hash to keep of a password. Throws std::bad_alloc when there is not enough memory.
QByteArray hashPassword(const QString &password);

/// Whether `password` is the one that `hash` was made of. An empty hash fits none, and takes as long as any other to
/// say so, so that nobody learns from the time which e-mails are registered.
bool isPassword(const QString &password, const QByteArray &hash);
