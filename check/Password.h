#pragma once

#include <QString>

#include <optional>

namespace Check {

/// A password, or the reason why there is none, as a sentence.
struct Password {
    std::optional<QString> text;
    QString error;
};

/// Reads the password from the single line of the file ("-" means standard input), from the environment variable
/// MAROVENDA_CHECK_PASSWORD, or from the terminal without echo, whichever is available first.
Password findPassword(const std::optional<QString> &file, const QString &email);

} // namespace Check
