#pragma once

#include "RecordTools.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <limits>

/// What a JSON library that is not the product's makes of the same bytes. Both take the last of repeated keys, skip
/// one leading byte-order mark and refuse a number beyond a double. They differ in two things, which the product
/// refuses wherever they stand, also under keys that no record lists: a whole number beyond 64 bits, and a value more
/// than 1,024 levels deep.
namespace SecondLibrary {

using json = nlohmann::ordered_json;

// NOLINTNEXTLINE(bugprone-exception-escape): the library's move constructor only looks as if it threw.
struct Document {
    /// Why the product refuses the bytes as a whole, if it does.
    enum class Kind {
        json,
        refused,
        /// JSON with a whole number beyond 64 bits, which the product refuses in whatever key it stands.
        beyondNumber,
        /// JSON nested deeper than the product follows.
        beyondDepth,
    };
    Kind kind = Kind::refused;
    json root;
};

Document parse(QByteArrayView bytes);

// Whether a value may stand in a field of the type of the last argument, whose value does not matter.

inline bool fits(const json &value, const QString &) { return value.is_string(); }
inline bool fits(const json &value, double) { return value.is_number(); }
inline bool fits(const json &value, qint64)
{
    return value.is_number_unsigned() ? value.get<std::uint64_t>() <= std::numeric_limits<std::int64_t>::max()
                                      : value.is_number_integer();
}
template <class T>
bool fits(const json &value, const QList<T> &);
template <class T>
bool fits(const json &value, const std::optional<T> &)
{
    return value.is_null() || fits(value, T());
}
template <Record R>
bool fits(const json &value, const R &record)
{
    if (!value.is_object())
        return false;
    bool all = true;
    RecordTools::forEachField(record, [&](const char *key, const auto &field) {
        const auto found = value.find(key);
        all = all && fits(found == value.end() ? json() : *found, field);
    });
    return all;
}
template <class T>
bool fits(const json &value, const QList<T> &)
{
    return value.is_array() &&
           std::all_of(value.begin(), value.end(), [](const json &row) { return fits(row, T()); });
}

// Whether what was read of a value that fits is what this library has.

inline bool agrees(const json &value, const QString &read)
{
    const QByteArray utf8 = read.toUtf8();
    return value.get_ref<const std::string &>() == std::string_view(utf8.constData(), std::size_t(utf8.size()));
}
inline bool agrees(const json &value, double read) { return RecordTools::same(value.get<double>(), read); }
inline bool agrees(const json &value, qint64 read) { return value.get<qint64>() == read; }
template <class T>
bool agrees(const json &value, const QList<T> &read);
template <class T>
bool agrees(const json &value, const std::optional<T> &read)
{
    return read ? !value.is_null() && agrees(value, *read) : value.is_null();
}
template <Record R>
bool agrees(const json &value, const R &read)
{
    bool all = true;
    RecordTools::forEachField(read, [&](const char *key, const auto &field) {
        const auto found = value.find(key);
        all = all && agrees(found == value.end() ? json() : *found, field);
    });
    return all;
}
template <class T>
bool agrees(const json &value, const QList<T> &read)
{
    return std::equal(value.begin(), value.end(), read.begin(), read.end(),
                      [](const json &row, const T &one) { return agrees(row, one); });
}

} // namespace SecondLibrary
