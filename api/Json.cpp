#include "Json.h"

#include <unicode/ustring.h>

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>

namespace Json::detail {

namespace {

constexpr QByteArrayView byteOrderMark("\xEF\xBB\xBF");

const char *typeName(simdjson::dom::element_type type)
{
    using simdjson::dom::element_type;
    switch (type) {
    case element_type::ARRAY:
        return "array";
    case element_type::OBJECT:
        return "object";
    case element_type::INT64:
    case element_type::UINT64:
    case element_type::DOUBLE:
        return "number";
    case element_type::STRING:
        return "text";
    case element_type::BOOL:
        return "boolean";
    case element_type::NULL_VALUE:
        return "null";
    }
    return "value";
}

/// Keeps a byte-order mark at the start, which QString::fromUtf8 would drop.
QString textFromUtf8(std::string_view utf8)
{
    const QByteArrayView bytes(utf8.data(), static_cast<qsizetype>(utf8.size()));
    if (bytes.startsWith(byteOrderMark)) [[unlikely]]
        return QString::fromUtf8(QByteArray(1, ' ') + bytes.toByteArray()).mid(1);
    return QString::fromUtf8(bytes);
}

/// Returns the short escape sequence of a character, or an empty view if it has none.
constexpr std::string_view escape(char16_t unit)
{
    switch (unit) {
    case u'"':
        return "\\\"";
    case u'\\':
        return "\\\\";
    case u'/':
        return "\\/";
    case u'\b':
        return "\\b";
    case u'\f':
        return "\\f";
    case u'\n':
        return "\\n";
    case u'\r':
        return "\\r";
    case u'\t':
        return "\\t";
    default:
        return {};
    }
}

char *append(char *to, std::string_view text) { return std::copy(text.begin(), text.end(), to); }

/// Writes the code point at `index` as UTF-8, and leaves `index` at its last unit.
char *appendCodePoint(char *to, QStringView text, qsizetype &index)
{
    char32_t point = text[index].unicode();
    if (QChar::isHighSurrogate(point) && index + 1 < text.size() && text[index + 1].isLowSurrogate())
        point = QChar::surrogateToUcs4(static_cast<char16_t>(point), text[++index].unicode());
    else if (QChar::isSurrogate(point))
        point = QChar::ReplacementCharacter;
    if (point < 0x800) {
        *to++ = static_cast<char>(0xC0 | (point >> 6));
    } else {
        if (point < 0x10000) {
            *to++ = static_cast<char>(0xE0 | (point >> 12));
        } else {
            *to++ = static_cast<char>(0xF0 | (point >> 18));
            *to++ = static_cast<char>(0x80 | ((point >> 12) & 0x3F));
        }
        *to++ = static_cast<char>(0x80 | ((point >> 6) & 0x3F));
    }
    *to++ = static_cast<char>(0x80 | (point & 0x3F));
    return to;
}

/// Converts ASCII to UTF-16; returns false if the text contains other characters.
bool widen(std::string_view ascii, char16_t *to)
{
    constexpr std::size_t step = 8;
    const char *from = ascii.data();
    const char *const end = from + ascii.size();
    for (; end - from >= std::ptrdiff_t(step); from += step, to += step) {
        std::array<unsigned char, step> part;
        std::memcpy(part.data(), from, step);
        if (std::bit_cast<std::uint64_t>(part) & 0x8080808080808080U)
            return false;
        std::ranges::copy(part, to);
    }
    for (; from < end; ++from, ++to) {
        *to = static_cast<unsigned char>(*from);
        if (*to >= 0x80)
            return false;
    }
    return true;
}

} // namespace

QString Texts::make(std::string_view utf8)
{
    const auto most = static_cast<qsizetype>(utf8.size()) + 1;
    if (utf8.empty() || utf8.size() > longestShared || ++m_count <= unsharedCount)
        return textFromUtf8(utf8);
    if (m_block.isNull() || m_used + most > blockSize) {
        m_block = QString(blockSize, Qt::Uninitialized);
        m_used = 0;
    }
    // A QString refers to a part of a reference-counted block. A string that is changed while others share its block
    // is copied first.
    QString::DataPointer &block = m_block.data_ptr();
    char16_t *const start = block.data() + m_used;
    auto size = static_cast<int>(utf8.size());
    if (!widen(utf8, start)) {
        // Cannot fail: the parser has validated the text.
        auto error = U_ZERO_ERROR;
        u_strFromUTF8(start, size, &size, utf8.data(), size, &error);
    }
    start[size] = u'\0';
    m_used += size + 1;
    block.d->ref();
    return QString(QString::DataPointer(block.d, start, size));
}

bool Reading::wrongType(Element found, const char *wanted)
{
    m_reason = QStringLiteral("%1, must be %2").arg(QLatin1String(typeName(found.type())), QLatin1String(wanted));
    return false;
}

bool Reading::missing()
{
    m_reason = QStringLiteral("missing");
    return false;
}

bool Reading::outOfRange()
{
    m_reason = QStringLiteral("number, must be a whole number of 64 bits");
    return false;
}

bool Reading::notJson(const char *why)
{
    m_reason = QStringLiteral("not JSON: %1").arg(QLatin1String(why));
    return false;
}

void Reading::insideKey(std::string_view key)
{
    const bool dot = !m_place.isEmpty() && !m_place.startsWith(u'[');
    m_place = QString::fromLatin1(key.data(), static_cast<qsizetype>(key.size())) +
              (dot ? QStringLiteral(".") : QString()) + m_place;
}

void Reading::insideRow(std::size_t index)
{
    m_place = QStringLiteral("[%1]").arg(index) + (m_place.isEmpty() ? QString() : QStringLiteral(".")) + m_place;
}

namespace {

bool parsePadded(QByteArrayView bytes, bool padded, Reading &reading, simdjson::dom::parser &parser, Element &root)
{
    if (bytes.startsWith(byteOrderMark))
        bytes = bytes.sliced(byteOrderMark.size());
    // A second byte-order mark is not JSON, even if a later version of the parser accepts it.
    auto error = bytes.startsWith(byteOrderMark) ? simdjson::TAPE_ERROR : simdjson::SUCCESS;
    // The parser must not be given a null pointer, not even with a length of 0.
    if (!error && bytes.isEmpty())
        error = simdjson::EMPTY;
    if (!error)
        error = parser.parse(bytes.data(), static_cast<std::size_t>(bytes.size()), !padded).get(root);
    return error ? reading.notJson(simdjson::error_message(error)) : true;
}

} // namespace

bool parse(QByteArrayView bytes, Reading &reading, simdjson::dom::parser &parser, Element &root)
{
    return parsePadded(bytes, false, reading, parser, root);
}

bool parse(QByteArray &&bytes, Reading &reading, simdjson::dom::parser &parser, Element &root)
{
    // The parser reads a little beyond the end, and copies the document if there is no spare capacity.
    const QByteArray mine = [&] {
        QByteArray moved = std::move(bytes);
        moved.reserve(moved.size() + readBeyond);
        return moved;
    }();
    return parsePadded(mine, true, reading, parser, root);
}

bool readValue(Element from, QString &to, Reading &reading)
{
    std::string_view text;
    if (from.get(text) != simdjson::SUCCESS)
        return reading.wrongType(from, "text");
    to = reading.texts.make(text);
    return true;
}

bool readValue(Element from, qint64 &to, Reading &reading)
{
    if (!from.is_number())
        return reading.wrongType(from, "number");
    int64_t number = 0;
    if (from.type() != simdjson::dom::element_type::INT64 || from.get(number) != simdjson::SUCCESS)
        return reading.outOfRange();
    to = number;
    return true;
}

bool readValue(Element from, double &to, Reading &reading)
{
    if (from.get(to) != simdjson::SUCCESS)
        return reading.wrongType(from, "number");
    return true;
}

namespace {

/// The number of UTF-16 units in a batch, which the compiler vectorises.
constexpr qsizetype batch = 16;

/// Returns whether a batch of units needs no escaping.
bool arePlain(const char16_t *units)
{
    bool plain = true;
    for (qsizetype i = 0; i < batch; ++i) {
        const char16_t unit = units[i];
        plain &= unit >= 0x20 && unit < 0x80 && unit != u'"' && unit != u'\\' && unit != u'/';
    }
    return plain;
}

/// Writes the character at `index`, and leaves `index` at its last unit.
char *appendUnit(char *out, QStringView text, qsizetype &index)
{
    const char16_t unit = text[index].unicode();
    if (unit >= 0x80)
        return appendCodePoint(out, text, index);
    if (const auto escaped = escape(unit); !escaped.empty())
        return append(out, escaped);
    if (unit < 0x20) {
        constexpr std::string_view digits = "0123456789abcdef";
        out = append(out, "\\u00");
        *out++ = digits[unit / 16];
        *out++ = digits[unit % 16];
    } else {
        *out++ = static_cast<char>(unit);
    }
    return out;
}

} // namespace

bool writeValue(QByteArray &to, const QString &value)
{
    // A UTF-16 unit takes at most six bytes ("\u001f"). The text is written in slices, so that a long text that is
    // mostly ASCII, such as a photo in base64, does not need six times its size.
    constexpr qsizetype slice = 16384;
    constexpr qsizetype most = 6;
    const QStringView text(value);
    to += '"';
    for (qsizetype index = 0; index < text.size();) {
        const qsizetype old = to.size();
        const qsizetype end = std::min(text.size(), index + slice);
        if (to.capacity() < old + (end - index) * most + 2)
            to.reserve(std::max(old + (text.size() - index) * 33 / 32 + slice * most + 2, to.capacity() * 3 / 2));
        to.resize(old + (end - index) * most);
        char *out = to.data() + old;
        while (index < end) {
            const char16_t *const units = text.utf16() + index;
            if (end - index >= batch && arePlain(units)) {
                for (qsizetype i = 0; i < batch; ++i)
                    out[i] = static_cast<char>(units[i]);
                out += batch;
                index += batch;
            } else {
                for (const qsizetype stop = std::min(end, index + batch); index < stop; ++index)
                    out = appendUnit(out, text, index);
            }
        }
        to.resize(out - to.constData());
    }
    to += '"';
    return true;
}

bool writeValue(QByteArray &to, qint64 value)
{
    to += QByteArray::number(value);
    return true;
}

bool writeValue(QByteArray &to, double value)
{
    if (!std::isfinite(value))
        return false;
    // Many parsers read digits alone as a 64-bit integer. "-0" would lose its sign, and large numbers would be
    // refused, so write a fraction or an exponent.
    if (value == 0 && std::signbit(value)) {
        to += "-0.0";
        return true;
    }
    constexpr double wholeNumberLimit = 0x1p63;
    const bool large = std::abs(value) >= wholeNumberLimit;
    // to_chars writes the shortest text that reads back as the same double, and ignores the locale.
    std::array<char, 32> digits;
    char *const begin = digits.data();
    const auto [end, error] = large
                                  ? std::to_chars(begin, begin + digits.size(), value, std::chars_format::scientific)
                                  : std::to_chars(begin, begin + digits.size(), value);
    Q_ASSERT(error == std::errc());
    to.append(digits.data(), end - digits.data());
    return true;
}

void writeKey(QByteArray &to, std::string_view key, bool first)
{
    if (!first)
        to += ',';
    to += '"';
    to.append(key.data(), static_cast<qsizetype>(key.size()));
    to += "\":";
}

} // namespace Json::detail
