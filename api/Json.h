#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <QString>

#include <boost/describe.hpp>
#include <boost/mp11.hpp>
#include <simdjson.h>

#include <array>
#include <concepts>
#include <optional>
#include <string_view>

// Converts records to and from JSON (RFC 8259), using their field lists. Reading is strict: if a value has the wrong
// type, reading fails. Unknown keys are ignored, and the last of duplicate keys counts. An optional field stays empty
// if its key is missing or its value is null.

/// A struct whose fields are listed with BOOST_DESCRIBE_STRUCT.
template <class T>
concept Record = boost::describe::has_describe_members<T>::value;

namespace Json {

/// With this many bytes of spare capacity after a document, `read` need not copy it.
inline constexpr qsizetype readBeyond = simdjson::SIMDJSON_PADDING;
template <class R>
using Fields = boost::describe::describe_members<R, boost::describe::mod_public>;

template <class R>
inline constexpr std::size_t fieldCount = boost::mp11::mp_size<Fields<R>>::value;
} // namespace Json

/// The JSON keys of a record, in the order of its fields.
template <Record R>
struct CodingKeys {
    static constexpr std::size_t count = Json::fieldCount<R>;

    /// The keys, which are ASCII.
    static constexpr std::array<std::string_view, count> names = [] {
        std::array<std::string_view, count> all;
        std::size_t index = 0;
        boost::mp11::mp_for_each<Json::Fields<R>>([&](auto field) { all[index++] = field.name; });
        return all;
    }();

    /// Returns the index of the field with this key, or nothing if there is none. Keys are case-sensitive.
    static constexpr std::optional<std::size_t> find(std::string_view key) noexcept
    {
        for (std::size_t index = 0; index < count; ++index) {
            if (names[index] == key)
                return index;
        }
        return std::nullopt;
    }
};

namespace Json {

/// The record, or the place and the reason of an error, for example "paquetes[17].tracking: number, must be text".
template <class R>
struct ReadResult {
    std::optional<R> record;
    QString error;

    explicit operator bool() const noexcept { return record.has_value(); }
};

namespace detail {

using Element = simdjson::dom::element;

/// Creates the strings of a document. In long documents strings share blocks of memory, because separate allocations
/// take longer than reading the document. A block is freed with the last of its strings.
class Texts {
public:
    Texts() = default;
    // Two copies would write to the same block.
    Q_DISABLE_COPY_MOVE(Texts)

    QString make(std::string_view utf8);

private:
    /// The first strings are allocated separately, so that short documents need no block.
    static constexpr int unsharedCount = 32;
    /// In UTF-16 units.
    static constexpr qsizetype blockSize = 32768;
    static constexpr std::size_t longestShared = blockSize / 16;

    int m_count = 0;
    QString m_block;
    qsizetype m_used = 0;
};

/// The state of a read: the string allocator, and the place of an error, which is collected from the inside out.
class Reading {
public:
    Texts texts;

    /// The first four always return false, so that a reader can return their result.
    bool wrongType(Element found, const char *wanted);
    bool missing();
    bool outOfRange();
    bool notJson(const char *why);
    void insideKey(std::string_view key);
    void insideRow(std::size_t index);
    QString text() const { return m_place.isEmpty() ? m_reason : m_place + QStringLiteral(": ") + m_reason; }

private:
    QString m_place;
    QString m_reason;
};

bool readValue(Element from, QString &to, Reading &reading);
bool readValue(Element from, qint64 &to, Reading &reading);
bool readValue(Element from, double &to, Reading &reading);
template <class T>
bool readValue(Element from, QList<T> &to, Reading &reading);
template <Record R>
bool readValue(Element from, R &to, Reading &reading);

template <class T>
inline constexpr bool isOptional = false;
template <class T>
inline constexpr bool isOptional<std::optional<T>> = true;

template <class T>
bool readField(const std::optional<Element> &from, T &to, Reading &reading)
{
    if constexpr (isOptional<T>) {
        if (!from || from->is_null())
            return true;
        return readValue(*from, to.emplace(), reading);
    } else {
        return from ? readValue(*from, to, reading) : reading.missing();
    }
}

template <class T>
bool readValue(Element from, QList<T> &to, Reading &reading)
{
    simdjson::dom::array rows;
    if (from.get(rows) != simdjson::SUCCESS)
        return reading.wrongType(from, "array");
    // The parser counts no more than 0xFFFFFF elements; a longer list grows while it is read.
    to.reserve(static_cast<qsizetype>(rows.size()));
    std::size_t index = 0;
    for (const Element row : rows) {
        if (!readValue(row, to.emplaceBack(), reading)) {
            reading.insideRow(index);
            return false;
        }
        ++index;
    }
    return true;
}

template <Record R>
bool readValue(Element from, R &to, Reading &reading)
{
    simdjson::dom::object object;
    if (from.get(object) != simdjson::SUCCESS)
        return reading.wrongType(from, "object");

    std::array<std::optional<Element>, CodingKeys<R>::count> values;
    for (const auto entry : object) {
        if (const auto field = CodingKeys<R>::find(entry.key))
            values[*field] = entry.value;
    }

    bool good = true;
    std::size_t index = 0;
    boost::mp11::mp_for_each<Fields<R>>([&](auto field) {
        if (good && !readField(values[index], to.*field.pointer, reading)) {
            reading.insideKey(field.name);
            good = false;
        }
        ++index;
    });
    return good;
}

/// Parses and validates a document, and stores its root, which lives in `parser`. Returns false and sets the reason
/// if the bytes are not JSON.
bool parse(QByteArrayView bytes, Reading &reading, simdjson::dom::parser &parser, Element &root);

/// The same, but frees the bytes after parsing; `parser` holds copies of what `root` needs.
bool parse(QByteArray &&bytes, Reading &reading, simdjson::dom::parser &parser, Element &root);

bool writeValue(QByteArray &to, const QString &value);
bool writeValue(QByteArray &to, qint64 value);
bool writeValue(QByteArray &to, double value);
template <class T>
bool writeValue(QByteArray &to, const QList<T> &rows);
template <Record R>
bool writeValue(QByteArray &to, const R &record);

/// Writes the key of an object's next member; `first` tells whether it is the first member.
void writeKey(QByteArray &to, std::string_view key, bool first);

template <class T>
bool writeValue(QByteArray &to, const QList<T> &rows)
{
    to += '[';
    bool first = true;
    for (const T &row : rows) {
        if (!first)
            to += ',';
        first = false;
        if (!writeValue(to, row))
            return false;
    }
    to += ']';
    return true;
}

template <Record R>
bool writeValue(QByteArray &to, const R &record)
{
    to += '{';
    bool first = true;
    bool good = true;
    boost::mp11::mp_for_each<Fields<R>>([&](auto field) {
        const auto &value = record.*field.pointer;
        const auto write = [&](const auto &present) {
            writeKey(to, field.name, first);
            first = false;
            good = good && writeValue(to, present);
        };
        if constexpr (isOptional<std::remove_cvref_t<decltype(value)>>) {
            if (value)
                write(*value);
        } else {
            write(value);
        }
    });
    to += '}';
    return good;
}

} // namespace detail

namespace detail {

template <Record R, class Bytes>
ReadResult<R> readRecord(Bytes bytes)
{
    Reading reading;
    simdjson::dom::parser parser;
    Element root;
    R record;
    if (!parse(std::move(bytes), reading, parser, root) || !readValue(root, record, reading))
        return {std::nullopt, reading.text()};
    return {std::move(record), {}};
}

} // namespace detail

// For tools that check every value of a reply by the same rules. `read` stops at the first error.
using detail::Element;
using detail::parse;
using detail::readField;
using detail::Reading;
using detail::readValue;

/// Reads a record from UTF-8 bytes, which may start with a byte-order mark. The record holds copies. Fails if the
/// bytes are not JSON or not an object, if values are nested deeper than 1,024 levels (the top level counts), if a
/// number exceeds a double, if a whole number does not fit 64 bits, or if a listed key has a value of the wrong type.
template <Record R>
ReadResult<R> read(QByteArrayView bytes)
{
    return detail::readRecord<R>(bytes);
}

/// The same, but frees the bytes before it creates the record, so that a large reply is not in memory twice.
template <Record R>
ReadResult<R> readAndFree(QByteArray bytes)
{
    return detail::readRecord<R>(std::move(bytes));
}

/// Writes a record as compact JSON in UTF-8, with "/" as "\/" and without absent fields. Returns nothing if the
/// record contains a double that is not finite. Lone surrogates, which UTF-8 cannot represent, are written as U+FFFD.
template <Record R>
std::optional<QByteArray> write(const R &record)
{
    QByteArray bytes;
    if (!detail::writeValue(bytes, record))
        return std::nullopt;
    return bytes;
}

} // namespace Json
