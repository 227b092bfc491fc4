#pragma once

#include "Findings.h"

#include "Json.h"

#include <vector>

namespace Check {

/// Checks every value of a reply, while the app's reader stops at the first error. The app's reader decides whether a
/// value has the right type.
class Examiner {
public:
    explicit Examiner(Findings &findings) : m_findings(findings) {}

    /// Returns the record, with valid texts in place of wrong values.
    template <Record R>
    R examine(Json::Element from, const Place &place)
    {
        R record;
        simdjson::dom::object object;
        if (from.get(object) != simdjson::SUCCESS) {
            Json::Reading reading;
            Json::readValue(from, record, reading);
            wrongType(place, reading.text(), from);
            return harmlessRecord<R>(place);
        }
        std::vector<std::pair<std::string_view, Json::Element>> ignored;
        std::array<std::optional<Json::Element>, CodingKeys<R>::count> values;
        for (const auto entry : object) {
            const auto field = CodingKeys<R>::find(entry.key);
            if (!field) {
                ignored.emplace_back(entry.key, entry.value);
                continue;
            }
            if (values[*field])
                twice(place.inside(text(entry.key)));
            values[*field] = entry.value;
        }
        for (const auto &[key, value] : ignored) {
            if (const QStringList inside = missingKeysIn<R>(value, values); !inside.isEmpty())
                tooDeep(place, text(key), inside);
            else
                ignoredKey(place, text(key), closestKey<R>(key, values));
        }
        std::size_t index = 0;
        boost::mp11::mp_for_each<Json::Fields<R>>([&](auto field) {
            examineField(values[index++], record.*field.pointer, place.inside(text(field.name)));
        });
        return record;
    }

    /// Adds a finding about bytes that are not JSON, with the place of the error.
    void notJson(const QByteArray &body, const QString &reason);
    /// Adds notes about what surrounds a JSON document.
    void aroundJson(const QByteArray &body);

private:
    static QString text(std::string_view key)
    {
        return QString::fromUtf8(key.data(), static_cast<qsizetype>(key.size()));
    }

    /// Returns the key that was probably meant: one with the same letters and digits, ignoring case and other
    /// characters, or one that is missing and means the same.
    template <Record R, class Values>
    static QString closestKey(std::string_view key, const Values &values)
    {
        const QString letters = lettersOf(text(key));
        for (std::size_t index = 0; index < CodingKeys<R>::count; ++index) {
            QString name = text(CodingKeys<R>::names[index]);
            if (lettersOf(name) == letters || (!values[index] && meansTheSame(letters, name)))
                return name;
        }
        return {};
    }
    static QString lettersOf(const QString &key);
    static bool meansTheSame(const QString &letters, const QString &name);

    /// Returns the missing keys of the record that a value holds, for example that of "data".
    template <Record R, class Values>
    static QStringList missingKeysIn(Json::Element value, const Values &values)
    {
        QStringList keys;
        simdjson::dom::object object;
        if (value.get(object) != simdjson::SUCCESS)
            return {};
        for (const auto entry : object) {
            if (const auto field = CodingKeys<R>::find(entry.key); field && !values[*field])
                keys += text(entry.key);
        }
        return keys;
    }

    template <Record Row>
    void examineField(const std::optional<Json::Element> &from, std::optional<QList<Row>> &to, const Place &place)
    {
        simdjson::dom::array rows;
        if (!from || from->get(rows) != simdjson::SUCCESS) {
            judge(from, to, place);
            return;
        }
        to.emplace();
        for (const Json::Element row : rows)
            to->append(examine<Row>(row, Place::rowOf(place.key, to->size())));
    }

    template <class T>
    void examineField(const std::optional<Json::Element> &from, T &to, const Place &place)
    {
        judge(from, to, place);
        if constexpr (std::same_as<T, std::optional<QString>>)
            lookAtText(place, to);
    }

    template <class T>
    void judge(const std::optional<Json::Element> &from, T &to, const Place &place)
    {
        Json::Reading reading;
        if (Json::readField(from, to, reading))
            return;
        wrongType(place, reading.text(), *from);
        replace(to, place);
    }

    static void replace(std::optional<QString> &value, const Place &place) { value = harmlessText(place); }
    template <Record Row>
    static void replace(std::optional<QList<Row>> &rows, const Place &place)
    {
        rows = {harmlessRecord<Row>(Place::rowOf(place.key, 0))};
    }
    template <Record R>
    static R harmlessRecord(const Place &place)
    {
        R record;
        boost::mp11::mp_for_each<Json::Fields<R>>(
            [&](auto field) { replace(record.*field.pointer, place.inside(text(field.name))); });
        return record;
    }

    static QString harmlessText(const Place &place);
    void wrongType(const Place &place, const QString &reason, Json::Element found);
    void tooDeep(const Place &place, const QString &key, const QStringList &inside);
    void ignoredKey(const Place &place, const QString &key, const QString &meant);
    void twice(const Place &place);
    void lookAtText(const Place &place, const std::optional<QString> &value);

    Findings &m_findings;
};

template <Record R>
struct ReadReply {
    /// The record that the app would receive from ApiClient.
    std::optional<R> record;
    /// The record with wrong values replaced; nothing if the reply is not a JSON object.
    std::optional<R> replaced;
};

/// Reads the body of a reply, and adds findings about its form. Adds none for an empty body.
template <Record R>
ReadReply<R> readReply(const QByteArray &body, Findings &findings)
{
    if (body.isEmpty())
        return {};
    auto read = Json::read<R>(body);
    const qsizetype faultsBefore = findings.count(Severity::Fault);
    Json::Reading reading;
    simdjson::dom::parser parser;
    Json::Element root;
    Examiner examiner(findings);
    std::optional<R> replaced;
    if (Json::parse(QByteArrayView(body), reading, parser, root)) {
        R looked = examiner.examine<R>(root, {});
        if (root.is_object())
            replaced = std::move(looked);
        examiner.aroundJson(body);
    } else {
        examiner.notJson(body, reading.text());
    }
    if (!read && findings.count(Severity::Fault) == faultsBefore)
        findings.add(Severity::Fault, Place{}, read.error, {});
    return {std::move(read.record), std::move(replaced)};
}

} // namespace Check
