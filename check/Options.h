#pragma once

#include "Diagnosis.h"

namespace Check {

/// What the command line asks for.
struct Options {
    enum class Wish { Check, Help, Version };

    Wish wish = Wish::Check;
    Order order;
    std::optional<QString> passwordFile;
    bool json = false;
    bool quiet = false;
    /// The text of --help.
    QString help;
    /// What is wrong with the command line, in a sentence; empty when nothing is.
    QString error;
};

/// Everything but the password, which no argument holds.
Options readOptions(const QStringList &arguments);

/// Why a text cannot be the address of a service; empty when it can.
QString troubleWithBase(const QString &base);

} // namespace Check
