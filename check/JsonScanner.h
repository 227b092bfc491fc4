#pragma once

#include <QByteArrayView>
#include <QList>
#include <QString>

namespace Check {

/// Scans a JSON document and stops at the first invalid byte.
///
/// The SAX interface of a JSON library (nlohmann/json 3.11) says less:
/// - It accepts what the app's reader refuses: 18446744073709551616, a value on level 1025, a zero byte after the
/// end.
/// - {"a":[],} is "unexpected '}'; expected string literal" at the brace; here "a comma before "}"", at the comma.
/// - {"x":007} is "unexpected number literal; expected '}'"; here "a number that begins with 0", at its start.
/// - {"a":[] "b":1} is "unexpected string literal; expected '}'"; here """ instead of "," or "}"".
/// - Only its English words, which quote the reply, tell a document that ends too early, text after the document and
///   bytes that are not UTF-8 from other errors; here that is `Stop`, which decides how to fix the document.
class JsonScanner {
public:
    enum class Stop { Nowhere, AtTheStart, Inside, AtTheEnd, AfterTheEnd, Encoding };

    explicit JsonScanner(QByteArrayView bytes) : m_bytes(bytes) {}

    /// Returns where the scan stopped; see also `offset` and `reason`.
    Stop scan();
    qsizetype offset() const { return m_at; }
    const QString &reason() const { return m_reason; }
    /// Whether it stopped within a text.
    bool isInText() const { return m_inText; }

private:
    bool atEnd() const { return m_at >= m_bytes.size(); }
    char peek() const { return atEnd() ? '\0' : m_bytes[m_at]; }
    void skipBlanks();
    bool fail(const QString &reason);
    bool failAt(qsizetype offset, const QString &reason);

    bool value();
    bool open(char bracket);
    bool afterValue();
    bool keyAndColon();
    bool string();
    bool escape();
    bool unicodeEscape();
    std::optional<char16_t> hexUnit();
    bool utf8();
    bool number();
    bool fits(qsizetype from, bool whole);
    bool word(QByteArrayView word);

    QByteArrayView m_bytes;
    qsizetype m_at = 0;
    /// The closing brackets that are still expected.
    QByteArray m_open;
    QString m_reason;
    bool m_encoding = false;
    bool m_inText = false;
};

} // namespace Check
