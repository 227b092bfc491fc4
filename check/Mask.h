#pragma once

#include <QRegularExpression>

namespace Check {

/// Hides a password in texts, however a server has encoded it: as it is, in capitals, with percent signs, HTML
/// entities, JSON escapes, hexadecimal digits or base64, also for some of its characters only, and cut off by "…".
class Mask {
public:
    /// Passwords of fewer than four characters would match anywhere, and are not hidden.
    explicit Mask(const QString &password);

    /// Returns the text as it may be printed: harmless, and without the password.
    QString printable(const QString &text) const;
    bool finds(const QString &text) const { return !m_pattern.pattern().isEmpty() && text.contains(m_pattern); }

private:
    QRegularExpression m_pattern;
};

} // namespace Check
