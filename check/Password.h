#pragma once

#include <QString>

#include <optional>

namespace Check {

/// A password, or why there is none, in a sentence.
struct Password {
    std::optional<QString> text;
    QString error;
};

/// Where the password comes from: the file's one line ("-" is the standard input), else the environment's
/// MAROVENDA_CHECK_PASSWORD, else what is typed at the terminal, which does not show it.
Password findPassword(const std::optional<QString> &file, const QString &email);

} // namespace Check
