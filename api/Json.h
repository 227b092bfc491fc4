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

// Records to and from JSON (RFC 8259), by their field lists. Nothing is lenient: a value of the wrong type fails
// the whole read. Keys that a record does not list are ignored; of a key that stands twice the last counts;
// a missing key and null both leave an optional field absent.

/// A struct whose fields are listed with BOOST_DESCRIBE_STRUCT.
template <class T>
concept Record = boost::describe::has_describe_members<T>::value;

namespace Json {

/// How many bytes of room behind a document spare the reader a copy of it.
inline constexpr qsizetype readBeyond = simdjson::SIMDJSON_PADDING;
template <class R>
using Fields = boost::describe::describe_members<R, boost::describe::mod_public>;

template <class R>
inline constexpr std::size_t fieldCount = boost::mp11::mp_size<Fields<R>>::value;
} // namespace Json

/// The JSON keys of a record in the order of its fields, and the way back from a key to its field.
template <Record R>
struct CodingKeys {
    static constexpr std::size_t count = Json::fieldCount<R>;

    /// The key texts (ASCII), by field.
    static constexpr std::array<std::string_view, count> names = [] {
        std::array<std::string_view, count> all;
        std::size_t index = 0;
        boost::mp11::mp_for_each<Json::Fields<R>>([&](auto field) { all[index++] = field.name; });
        return all;
    }();

    /// The field of a key, 0 … count - 1; nothing for a text that is no key. Letter case counts.
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

/// What reading gave: the record, or the reason and its place, as in
/// "paquetes[17].tracking: number, must be text".
template <class R>
struct ReadResult {
    std::optional<R> record;
    QString error;

    explicit operator bool() const noexcept { return record.has_value(); }
};

namespace detail {

using Element = simdjson::dom::element;

/// Makes the texts of a document. Those of a long one share blocks of memory, which go with the last of their texts:
/// to allocate each by itself takes longer than to read it.
class Texts {
public:
    Texts() = default;
    // Two that go on in one block would write over each other's texts.
    Q_DISABLE_COPY_MOVE(Texts)

    QString make(std::string_view utf8);

private:
    /// Of a short document each text has its own; nothing of it is kept beyond what is used.
    static constexpr int few = 32;
    /// UTF-16 units in a block.
    static constexpr qsizetype blockSize = 32768;
    static constexpr std::size_t longest = blockSize / 16;

    int m_count = 0;
    QString m_block;
    qsizetype m_used = 0;
};

/// What goes along with a read: the texts met so far, and where it failed, collected from the inside out.
class Reading {
public:
    Texts texts;

    /// Always false, so that a reader can return it.
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
    // The parser counts up to 0xFFFFFF elements; beyond that the list grows as it goes.
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

/// Finds the root of a fully validated document, which lives in `parser`; false with a reason when the bytes are
/// not JSON.
bool parse(QByteArrayView bytes, Reading &reading, simdjson::dom::parser &parser, Element &root);

/// The same, letting go of the bytes once they are parsed: what `root` needs of them is in `parser`.
bool parse(QByteArray &&bytes, Reading &reading, simdjson::dom::parser &parser, Element &root);

bool writeValue(QByteArray &to, const QString &value);
bool writeValue(QByteArray &to, qint64 value);
bool writeValue(QByteArray &to, double value);
template <class T>
bool writeValue(QByteArray &to, const QList<T> &rows);
template <Record R>
bool writeValue(QByteArray &to, const R &record);

/// Opens the key of the next member; `first` says whether it is the object's first.
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

// For tools that look at every value of a reply, where reading ends with the first wrong one: the same judgement,
// value by value.
using detail::Element;
using detail::parse;
using detail::readField;
using detail::Reading;
using detail::readValue;

/// Reads `bytes` (UTF-8, at most one leading byte-order mark) as a record, which holds copies. Fails on anything that
/// is not JSON, has a value deeper than 1,024 levels (the top is the first), a number beyond a double or a whole
/// number beyond 64 bits, on a top level that is not an object, and on any listed key with the wrong type; then there
/// is no record at all.
template <Record R>
ReadResult<R> read(QByteArrayView bytes)
{
    return detail::readRecord<R>(bytes);
}

/// The same, freeing the bytes before the record is made, so that a large reply is not in memory twice.
template <Record R>
ReadResult<R> readAndFree(QByteArray bytes)
{
    return detail::readRecord<R>(std::move(bytes));
}

/// Writes a record as compact JSON in UTF-8, "/" as "\/", every required field and no absent one. Nothing when
/// the record holds a double that is not finite. A lone surrogate, which UTF-8 cannot hold, is written as U+FFFD.
template <Record R>
std::optional<QByteArray> write(const R &record)
{
    QByteArray bytes;
    if (!detail::writeValue(bytes, record))
        return std::nullopt;
    return bytes;
}

} // namespace Json
