#pragma once

#include "Diagnosis.h"

namespace Check {

/// The options of the command line.
struct Options {
    enum class Wish { Check, Contract, Help, Version };

    Wish wish = Wish::Check;
    Order order;
    std::optional<QString> passwordFile;
    bool json = false;
    bool quiet = false;
    /// The text of --help.
    QString help;
    /// The error in the command line, as a sentence; empty if there is none.
    QString error;
};

/// Reads the command line. The password is not part of it.
Options readOptions(const QStringList &arguments);

/// Returns why the text cannot be the base address of a service, or an empty text if it can.
QString troubleWithBase(const QString &base);

} // namespace Check
