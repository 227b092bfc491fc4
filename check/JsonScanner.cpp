#include "JsonScanner.h"

#include <QByteArray>
#include <QLocale>

#include <charconv>
#include <cmath>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype maxDepth = 1024;

bool isDigit(char byte) { return byte >= '0' && byte <= '9'; }
quint8 octet(char byte) { return static_cast<quint8>(byte); }
bool isControl(char byte) { return octet(byte) < 0x20; }

QString nameOfByte(char byte)
{
    if (byte > ' ' && byte < '\x7F')
        return u'"' + QString(QLatin1Char(byte)) + u'"';
    return u"byte 0x%1"_s.arg(uint(octet(byte)), 2, 16, QChar(u'0'));
}

} // namespace

namespace Check {

JsonScanner::Stop JsonScanner::scan()
{
    skipBlanks();
    const qsizetype start = m_at;
    bool good = value();
    while (good && !m_open.isEmpty())
        good = afterValue();
    if (good) {
        skipBlanks();
        if (!atEnd())
            m_reason = (isControl(peek()) ? nameOfByte(peek()) : u"text"_s) + u" after the JSON"_s;
        return atEnd() ? Stop::Nowhere : Stop::AfterTheEnd;
    }
    if (m_encoding)
        return Stop::Encoding;
    if (atEnd())
        return Stop::AtTheEnd;
    return m_at == start ? Stop::AtTheStart : Stop::Inside;
}

void JsonScanner::skipBlanks()
{
    while (!atEnd() && (peek() == ' ' || peek() == '\n' || peek() == '\r' || peek() == '\t'))
        ++m_at;
}

bool JsonScanner::fail(const QString &reason)
{
    m_reason = atEnd() ? u"the document is incomplete"_s : reason;
    return false;
}

bool JsonScanner::failAt(qsizetype offset, const QString &reason)
{
    m_at = offset;
    return fail(reason);
}

/// Scans a value. For an array or object, scans only up to the first value inside; afterValue() continues.
bool JsonScanner::value()
{
    skipBlanks();
    switch (peek()) {
    case '{':
        return open('}');
    case '[':
        return open(']');
    case '"':
        return string();
    case 't':
        return word("true");
    case 'f':
        return word("false");
    case 'n':
        return word("null");
    default:
        if (peek() == '-' || isDigit(peek()))
            return number();
        if (peek() == ']' || peek() == '}')
            return fail(u"a value is missing before %1"_s.arg(nameOfByte(peek())));
        return fail(u"%1 instead of a value"_s.arg(nameOfByte(peek())));
    }
}

bool JsonScanner::open(char bracket)
{
    const qsizetype from = m_at++;
    m_open += bracket;
    skipBlanks();
    if (peek() == bracket)
        return true; // afterValue closes it
    // The reader does not count empty arrays and objects.
    if (m_open.size() >= maxDepth)
        return failAt(from, u"nested deeper than the app reads"_s);
    return bracket == '}' ? keyAndColon() && value() : value();
}

bool JsonScanner::afterValue()
{
    skipBlanks();
    const char bracket = m_open.back();
    if (peek() == bracket && !atEnd()) {
        ++m_at;
        m_open.chop(1);
        return true;
    }
    if (peek() != ',' || atEnd())
        return fail(u"%1 instead of \",\" or \"%2\""_s.arg(nameOfByte(peek())).arg(QLatin1Char(bracket)));
    const qsizetype comma = m_at++;
    skipBlanks();
    if (peek() == bracket && !atEnd())
        return failAt(comma, u"a comma before \"%1\""_s.arg(QLatin1Char(bracket)));
    return bracket == '}' ? keyAndColon() && value() : value();
}

bool JsonScanner::keyAndColon()
{
    if (peek() != '"')
        return fail(u"%1 instead of a key in double quotes"_s.arg(nameOfByte(peek())));
    if (!string())
        return false;
    skipBlanks();
    if (peek() != ':')
        return fail(u"%1 instead of \":\""_s.arg(nameOfByte(peek())));
    ++m_at;
    return true;
}

bool JsonScanner::string()
{
    m_inText = true;
    ++m_at;
    while (!atEnd() && peek() != '"') {
        if (isControl(peek()))
            return fail(u"%1 in a text must be escaped"_s.arg(nameOfByte(peek())));
        const bool good = peek() == '\\' ? escape() : utf8();
        if (!good)
            return false;
    }
    if (atEnd())
        return fail({});
    ++m_at;
    m_inText = false;
    return true;
}

bool JsonScanner::escape()
{
    const qsizetype from = m_at++;
    if (atEnd())
        return fail({});
    if (peek() == 'u')
        return unicodeEscape();
    if (!QByteArrayView("\"\\/bfnrt").contains(peek()))
        return failAt(from, u"\"\\\" before %1 is not a valid escape"_s.arg(nameOfByte(m_bytes[from + 1])));
    ++m_at;
    return true;
}

std::optional<char16_t> JsonScanner::hexUnit()
{
    ++m_at;
    if (m_at + 4 > m_bytes.size())
        return std::nullopt;
    quint16 unit = 0;
    const char *const from = m_bytes.data() + m_at;
    const auto [end, error] = std::from_chars(from, from + 4, unit, 16);
    if (error != std::errc() || end != from + 4)
        return std::nullopt;
    m_at += 4;
    return unit;
}

bool JsonScanner::unicodeEscape()
{
    const qsizetype from = m_at - 1;
    const auto first = hexUnit();
    if (!first)
        return failAt(from, u"\"\\u\" without four hexadecimal digits"_s);
    if (!QChar::isSurrogate(*first))
        return true;
    const bool more = QChar::isHighSurrogate(*first) && m_bytes.sliced(m_at).startsWith("\\u");
    if (more)
        ++m_at;
    const auto second = more ? hexUnit() : std::nullopt;
    if (!second || !QChar::isLowSurrogate(*second))
        return failAt(from, u"\"\\u%1\" is a lone surrogate"_s.arg(uint(*first), 4, 16, QChar(u'0')));
    return true;
}

/// Scans a UTF-8 character. Refuses overlong forms and surrogates.
bool JsonScanner::utf8()
{
    const quint8 lead = octet(peek());
    const int more = lead < 0x80 ? 0 : lead >= 0xC2 && lead < 0xE0 ? 1 : lead >= 0xE0 && lead < 0xF0 ? 2 : 3;
    bool good = lead < 0x80 || (lead >= 0xC2 && lead < 0xF5);
    for (int i = 1; good && i <= more; ++i) {
        if (m_at + i >= m_bytes.size())
            return failAt(m_bytes.size(), {});
        const quint8 next = octet(m_bytes[m_at + i]);
        quint8 least = 0x80, most = 0xBF;
        if (i == 1) {
            least = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : least;
            most = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : most;
        }
        good = next >= least && next <= most;
    }
    if (!good) {
        m_encoding = true;
        return fail(u"%1 is not UTF-8"_s.arg(nameOfByte(peek())));
    }
    m_at += 1 + more;
    return true;
}

bool JsonScanner::number()
{
    const qsizetype from = m_at;
    const auto digits = [this] {
        const qsizetype before = m_at;
        while (isDigit(peek()))
            ++m_at;
        return m_at > before;
    };
    if (peek() == '-')
        ++m_at;
    const bool zero = peek() == '0';
    if (!digits())
        return fail(u"\"-\" without a digit after it"_s);
    if (zero && m_at - from > (m_bytes[from] == '-' ? 2 : 1))
        return failAt(from, u"a number that begins with 0"_s);
    bool whole = true;
    if (peek() == '.') {
        whole = false;
        ++m_at;
        if (!digits())
            return fail(u"\".\" without a digit after it"_s);
    }
    if (peek() == 'e' || peek() == 'E') {
        whole = false;
        ++m_at;
        if (peek() == '+' || peek() == '-')
            ++m_at;
        if (!digits())
            return fail(u"an exponent without a digit"_s);
    }
    return fits(from, whole) || failAt(from, u"a number too large for the app"_s);
}

bool JsonScanner::fits(qsizetype from, bool whole)
{
    const QByteArray text = m_bytes.sliced(from, m_at - from).toByteArray();
    bool good = false;
    // Numbers that are rounded to 0 are valid.
    if (!whole)
        return std::isfinite(QLocale::c().toDouble(QString::fromLatin1(text), &good));
    text.toLongLong(&good);
    if (!good && !text.startsWith('-'))
        text.toULongLong(&good);
    return good;
}

bool JsonScanner::word(QByteArrayView word)
{
    if (m_bytes.sliced(m_at).startsWith(word)) {
        m_at += word.size();
        return true;
    }
    return fail(u"%1 instead of a value"_s.arg(nameOfByte(peek())));
}

} // namespace Check
