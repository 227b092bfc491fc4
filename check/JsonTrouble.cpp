#include "JsonTrouble.h"

#include "JsonScanner.h"
#include "Text.h"

#include <QRegularExpression>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

using Check::JsonScanner;
using Check::JsonTrouble;

constexpr QByteArrayView byteOrderMark("\xEF\xBB\xBF");
/// How many times to look for a document after other text.
constexpr int attempts = 64;

QString nothingButJson()
{
    return u"Print only the JSON. In PHP: set display_errors to off (errors belong in the log), and have no echo, "
           u"blanks "
           "or byte-order mark outside <?php ?>."_s;
}

QString byLibrary() { return u"Write the reply with a JSON library (PHP: json_encode), not by hand."_s; }

QString excerpt(QByteArrayView bytes, qsizetype offset)
{
    return Check::quoted(
        QString::fromUtf8(bytes.sliced(offset).first(std::min<qsizetype>(bytes.size() - offset, 400))).simplified(),
        40);
}

bool isBlank(char byte) { return byte == ' ' || byte == '\t' || byte == '\n' || byte == '\r'; }

/// Returns whether the bytes, which are invalid at `wrong`, are other text and then a complete document.
bool isTextBeforeJson(QByteArrayView bytes, qsizetype wrong)
{
    if (bytes.startsWith('{'))
        return false;
    qsizetype at = 0;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        at = bytes.indexOf('{', at + 1);
        if (at < 0)
            return false;
        if (wrong < at && JsonScanner(bytes.sliced(at)).scan() == JsonScanner::Stop::Nowhere)
            return !bytes.startsWith('[') || bytes.first(at).contains(']');
    }
    return false;
}

/// Documents that servers send instead of JSON; the first that fits counts.
struct Stranger {
    QRegularExpression pattern;
    QString what;
    QString remedy;
};

const QList<Stranger> &strangers()
{
    const auto pattern = [](const QString &text) {
        return QRegularExpression(text, QRegularExpression::CaseInsensitiveOption |
                                            QRegularExpression::DotMatchesEverythingOption);
    };
    static const QList<Stranger> all{
        {pattern(
             u"^<.*(<title>just a moment\\.\\.\\.|_cf_chl_opt|attention required! \\| cloudflare|"
             "checking your browser|request unsuccessful\\. incapsula|sucuri_cloudproxy|<title>ddos-guard|awswafcookie)"_s),
         u"the challenge page of a CDN or firewall"_s,
         u"Exempt the app's endpoints from the challenge: the app is no browser and cannot pass it."_s},
        {pattern(u"^<\\?(php|=|\\s)"_s), u"the source of a PHP file"_s,
         u"The web server does not run PHP for this file: enable PHP (PHP-FPM, for example). Anybody can read such "
         "files: change the passwords in them."_s},
        {pattern(u"^(<br ?/?>\\s*)?((PHP |<b>)(%1)(</b>)?: |(%1): .* in \\S+(:| on line )\\d)"_s.arg(
             u"fatal error|parse error|warning|notice|deprecated"_s)),
         u"an error message of PHP"_s,
         u"Correct the error; the server's error log has it in full. Set display_errors to off."_s},
        {pattern(
             u"^(<\\?xml[^>]*>\\s*)?(<!--.*?-->\\s*)?<(!doctype html|html|head|body|title|meta|style|script|h[1-6]|p|"
             "br|b|i|div|span|center|pre|hr|ul|table|a)\\b"_s),
         u"an HTML page"_s,
         u"Answer with JSON, also in case of errors: the app cannot read pages of a web server or proxy. Is the "
         "base address right?"_s},
        {pattern(u"^<"_s), u"XML"_s, u"Answer with JSON (PHP: json_encode); the app does not read XML."_s},
    };
    return all;
}

std::optional<JsonTrouble> findStranger(QByteArrayView bytes, qsizetype start)
{
    constexpr qsizetype searched = qsizetype(64) * 1024;
    const QString text = QString::fromLatin1(bytes.sliced(start).first(std::min(bytes.size() - start, searched)));
    for (const Stranger &each : strangers()) {
        if (text.contains(each.pattern))
            return JsonTrouble{start, each.what + u", not JSON: "_s + excerpt(bytes, start), each.remedy};
    }
    return std::nullopt;
}

std::optional<JsonTrouble> foreignEncoding(QByteArrayView bytes)
{
    const bool marked = bytes.startsWith("\xFF\xFE") || bytes.startsWith("\xFE\xFF");
    const bool zeros = bytes.size() > 1 && (bytes[0] == '\0') != (bytes[1] == '\0');
    if (marked || zeros)
        return JsonTrouble{0, u"UTF-16 text, must be UTF-8"_s,
                           u"Send the reply in UTF-8, without a byte-order mark."_s};
    return std::nullopt;
}

JsonTrouble describe(QByteArrayView bytes, const JsonScanner &scanner, JsonScanner::Stop stop)
{
    using Stop = JsonScanner::Stop;
    const qsizetype start = std::ranges::find_if_not(bytes, isBlank) - bytes.begin();
    if (start == bytes.size())
        return {0, u"only blanks"_s, u"Send the JSON reply; check the server's error log."_s};
    const qsizetype at = scanner.offset();
    if (stop != Stop::Encoding && at < bytes.size() && quint8(bytes[at]) < 0x20 && !scanner.isInText())
        return {at, scanner.reason(), u"Outside texts, JSON allows blanks, tabs and line breaks only."_s};
    if (stop != Stop::AfterTheEnd && isTextBeforeJson(bytes.sliced(start), at - start))
        return {start, u"text before the JSON: "_s + excerpt(bytes, start), nothingButJson()};
    if (const auto stranger = findStranger(bytes, start))
        return *stranger;
    switch (stop) {
    case Stop::AfterTheEnd:
        return {at, scanner.reason() + u": "_s + excerpt(bytes, at), nothingButJson()};
    case Stop::AtTheEnd:
        return {at, scanner.reason(),
                u"Send the whole document. Content-Length counts bytes (PHP: strlen), not characters (mb_strlen)."_s};
    case Stop::Encoding:
        return {at, scanner.reason(),
                u"Send UTF-8. Does the database connection use another character set, such as Latin-1?"_s};
    default:
        return {at, scanner.reason(), byLibrary()};
    }
}

QString place(QByteArrayView bytes, qsizetype offset)
{
    const QByteArrayView before = bytes.first(offset);
    const qsizetype line = std::count(before.begin(), before.end(), '\n') + 1;
    return u"line %1, byte %2"_s.arg(line).arg(offset - (before.lastIndexOf('\n') + 1));
}

} // namespace

QString Check::JsonTrouble::place(QByteArrayView bytes) const { return ::place(bytes, offset); }

QList<JsonTrouble> Check::findAroundJson(QByteArrayView bytes)
{
    const QString noBlanks = u"In PHP: have no blanks or empty lines outside <?php ?>; headers cannot follow them."_s;
    QList<JsonTrouble> found;
    const qsizetype mark = bytes.startsWith(byteOrderMark) ? byteOrderMark.size() : 0;
    if (mark > 0)
        found += {0, u"a byte-order mark before the JSON, which the app skips"_s,
                  u"Save the server's files without it; other readers refuse it."_s};
    if (bytes.size() > mark && isBlank(bytes[mark]))
        found += {mark, u"blanks before the JSON, which the app skips"_s, noBlanks};
    // One line break at the end is usual.
    if (bytes.endsWith('\n'))
        bytes.chop(1);
    const auto *const end = std::find_if_not(bytes.rbegin(), bytes.rend(), isBlank).base();
    if (end != bytes.end())
        found += {end - bytes.begin(), u"blanks after the JSON, which the app skips"_s, noBlanks};
    return found;
}

std::optional<JsonTrouble> Check::findJsonTrouble(QByteArrayView bytes)
{
    if (auto foreign = foreignEncoding(bytes))
        return foreign;
    if (bytes.startsWith("\x1F\x8B"))
        return JsonTrouble{0, u"compressed with gzip, without a header that says so"_s,
                           u"Send \"Content-Encoding: gzip\" with it, or let the web server compress."_s};
    const qsizetype mark = bytes.startsWith(byteOrderMark) ? byteOrderMark.size() : 0;
    if (mark && bytes.sliced(mark).startsWith(byteOrderMark))
        return JsonTrouble{mark, u"a second byte-order mark"_s, nothingButJson()};
    const QByteArrayView document = bytes.sliced(mark);
    JsonScanner scanner(document);
    const auto stop = scanner.scan();
    if (stop == JsonScanner::Stop::Nowhere)
        return std::nullopt;
    JsonTrouble trouble = describe(document, scanner, stop);
    trouble.offset += mark;
    return trouble;
}
