#include "Mask.h"

#include "Text.h"

using namespace Qt::StringLiterals;

namespace {

/// A text as a sequence of patterns, one for each of its characters.
using Parts = QStringList;

constexpr qsizetype shortest = 4;
/// In characters, bytes or digits.
constexpr qsizetype longestPassword = 48;
/// The number of characters from which on a text that was cut off is hidden.
constexpr qsizetype shortestCut = 3;

QString hex(uint number, int digits = 2) { return QString::number(number, 16).rightJustified(digits, u'0'); }

/// Returns a pattern for a character and its encodings. The pattern ignores letter case.
QString patternOf(char32_t point)
{
    const QString text = QString::fromUcs4(&point, 1);
    const bool ascii = point < 0x80;
    QStringList all{QRegularExpression::escape(text)};
    if (!QChar::isLetterOrNumber(point))
        all[0].prepend(u"\\\\*"_s);
    if (text.toUpper().size() > text.size())
        all += text.toUpper();
    QString bytes, units;
    for (const char byte : text.toUtf8())
        bytes += u"(?:[%=](?:25)*|\\\\+x)"_s + hex(quint8(byte));
    for (const QChar unit : text)
        units += u"(?:\\\\+|%)u"_s + hex(unit.unicode(), 4);
    all += {bytes, units, u"&(?:amp;)*#(?:0*%1|x0*%2);?"_s.arg(uint(point)).arg(hex(uint(point), 1))};
    if (!ascii || !QChar::isLetterOrNumber(point))
        all += u"&(?:amp;)*[a-z]{2,8};"_s;
    if (!ascii) {
        // Latin-1, decomposed, UTF-8 that was read as Latin-1, and lost.
        all += {u"(?:%(?:25)*|\\\\+x)"_s + hex(uint(point)),
                QRegularExpression::escape(text.normalized(QString::NormalizationForm_D)),
                QRegularExpression::escape(Check::harmless(QString::fromLatin1(text.toUtf8()))),
                u"(?:[?\\x{FFFD}]|%3f){1,4}"_s};
    }
    return u"(?:"_s + all.join(u'|') + u')';
}

Parts characters(const QString &password)
{
    // One pattern for several blanks, which the report shows as one.
    const QString blanks =
        u"(?:[\\s+]|(?:[%=](?:25)*|\\\\+x)(?:20|09|a0|c2(?:%(?:25)*|\\\\+x)a0)|\\\\+t|(?:\\\\+|%)u00(?:09|20|a0)|"
        "&(?:amp;)*(?:#(?:0*(?:9|32|160)|x0*(?:9|20|a0));?|[a-z]{2,8};))+"_s;
    Parts parts;
    for (const char32_t point : password.normalized(QString::NormalizationForm_C).toUcs4()) {
        if (!QChar::isSpace(point))
            parts += patternOf(point);
        else if (parts.isEmpty() || parts.last() != blanks)
            parts += blanks;
    }
    return parts;
}

Parts hexadecimal(const QByteArray &bytes)
{
    Parts parts;
    for (const char byte : bytes)
        parts += (parts.isEmpty() ? QString() : u"(?:0x|[ :,-])*"_s) + hex(quint8(byte));
    return parts;
}

/// Returns the patterns of the bytes in base64 after `before` unknown bytes.
Parts base64(const QByteArray &bytes, qsizetype before)
{
    const QByteArray coded = (QByteArray(before, '\0') + bytes).toBase64(QByteArray::OmitTrailingEquals);
    const qsizetype bits = (before + bytes.size()) * 8;
    Parts parts;
    for (qsizetype i = before * 8 / 6; i < coded.size(); ++i) {
        const bool known = i * 6 >= before * 8 && (i + 1) * 6 <= bits;
        const QString text{QLatin1Char(coded[i])};
        parts += !known            ? u"(?:[\\w+-]|\\\\*/|%2[bf])"_s
                 : coded[i] == '+' ? u"(?:[+-]|%2b)"_s
                 : coded[i] == '/' ? u"(?:\\\\*/|_|%2f)"_s
                                   : text;
    }
    return parts;
}

/// Returns a pattern for the whole text, and for its beginning before "…".
QString wholeOrCut(Parts parts)
{
    // A pattern may not be long. Of a long text everything from its beginning on is hidden.
    const bool isLong = parts.size() > longestPassword;
    if (isLong)
        parts = parts.first(longestPassword);
    QString whole = parts.join(QString()) + (isLong ? u".*"_s : QString());
    if (parts.size() <= shortestCut)
        return whole;
    QString cut = Parts(parts.first(shortestCut)).join(QString());
    for (const QString &part : parts.sliced(shortestCut))
        cut += u"(?:"_s + part;
    cut += u")?"_s.repeated(parts.size() - shortestCut);
    // The cut may be within an encoded character.
    return whole + u'|' + cut + u"(?:[%=&\\\\][^\\s…]{0,9})?(?=…)"_s;
}

} // namespace

Check::Mask::Mask(const QString &password)
{
    if (password.size() < shortest)
        return;
    const QByteArray bytes = password.toUtf8();
    const Parts parts = characters(password);
    QStringList all{wholeOrCut(parts), wholeOrCut(hexadecimal(bytes))};
    for (const qsizetype before : {0, 1, 2})
        all += wholeOrCut(base64(bytes, before));
    // A quoted text may begin within the password, behind what ends a JSON document.
    for (qsizetype i = 1; i + shortestCut <= parts.size() && i < longestPassword; ++i) {
        if (u"\"}]"_s.contains(password[i - 1]))
            all += u"(?<=\")"_s + Parts(parts.sliced(i, shortestCut)).join(QString()) + u".*"_s;
    }
    m_pattern.setPattern(all.join(u'|'));
    m_pattern.setPatternOptions(QRegularExpression::CaseInsensitiveOption |
                                QRegularExpression::DotMatchesEverythingOption |
                                QRegularExpression::UseUnicodePropertiesOption);
    Q_ASSERT(m_pattern.isValid());
}

QString Check::Mask::printable(const QString &text) const
{
    QString clean = harmless(text);
    const QString hidden = u"(hidden)"_s;
    if (m_pattern.pattern().isEmpty())
        return clean;
    // A search may be given up, for example in a long row of backslashes.
    return m_pattern.match(clean).isValid() ? clean.replace(m_pattern, hidden) : hidden;
}
