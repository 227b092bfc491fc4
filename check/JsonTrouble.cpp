#include "JsonTrouble.h"

#include "JsonScanner.h"
#include "Text.h"

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

/// Returns whether the bytes end with a complete document after other text.
bool endsWithJson(QByteArrayView bytes)
{
    qsizetype at = 0;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        at = bytes.indexOf('{', at + 1);
        if (at < 0)
            return false;
        if (JsonScanner(bytes.sliced(at)).scan() == JsonScanner::Stop::Nowhere)
            return true;
    }
    return false;
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
    const QByteArrayView trimmed = bytes.trimmed();
    const qsizetype start = trimmed.isEmpty() ? 0 : trimmed.data() - bytes.data();
    if (trimmed.isEmpty())
        return {0, u"only blanks"_s, u"Send the JSON reply; check the server's error log."_s};
    if (stop != Stop::AfterTheEnd && !trimmed.startsWith('{') && endsWithJson(trimmed))
        return {start, u"text before the JSON: "_s + excerpt(bytes, start), nothingButJson()};
    if (trimmed.startsWith('<'))
        return {
            start, u"an HTML page, not JSON: "_s + excerpt(bytes, start),
            u"Answer with JSON, also in case of errors: the app cannot read pages of a web server or proxy. Is the "
            "base address right?"_s};
    const qsizetype at = scanner.offset();
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

} // namespace

QString Check::JsonTrouble::place(QByteArrayView bytes) const
{
    const QByteArrayView before = bytes.first(offset);
    const qsizetype line = std::count(before.begin(), before.end(), '\n') + 1;
    return u"line %1, byte %2"_s.arg(line).arg(offset - (before.lastIndexOf('\n') + 1));
}

std::optional<JsonTrouble> Check::findJsonTrouble(QByteArrayView bytes)
{
    if (auto foreign = foreignEncoding(bytes))
        return foreign;
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
