#pragma once

#include "Findings.h"

#include "Json.h"

namespace Check {

/// What a whole reply is looked through for, value by value, where the app's reader stops at the first wrong one.
/// Every judgement of a type is that reader's.
class Examiner {
public:
    explicit Examiner(Findings &findings) : m_findings(findings) {}

    /// Returns the record as it would be with the wrong values replaced, by texts that nothing is to be said of.
    template <Record R>
    R examine(Json::Element from, const Place &place)
    {
        R record;
        simdjson::dom::object object;
        if (from.get(object) != simdjson::SUCCESS) {
            Json::Reading reading;
            Json::readValue(from, record, reading);
            wrongType(place, reading.text());
            boost::mp11::mp_for_each<Json::Fields<R>>(
                [&](auto field) { replace(record.*field.pointer, place.inside(text(field.name))); });
            return record;
        }
        std::array<std::optional<Json::Element>, CodingKeys<R>::count> values;
        for (const auto entry : object) {
            const auto field = CodingKeys<R>::find(entry.key);
            if (!field) {
                ignoredKey(place, text(entry.key), closestKey<R>(entry.key));
                continue;
            }
            if (values[*field])
                twice(place.inside(text(entry.key)));
            values[*field] = entry.value;
        }
        std::size_t index = 0;
        boost::mp11::mp_for_each<Json::Fields<R>>([&](auto field) {
            examineField(values[index++], record.*field.pointer, place.inside(text(field.name)));
        });
        return record;
    }

    /// What the reader says of bytes that are not JSON at all, with the place.
    void notJson(const QByteArray &body, const QString &reason);

private:
    static QString text(std::string_view key)
    {
        return QString::fromUtf8(key.data(), static_cast<qsizetype>(key.size()));
    }

    /// The key that was probably meant: the same letters, whatever their case and what stands between them.
    template <Record R>
    static QString closestKey(std::string_view key)
    {
        for (const std::string_view name : CodingKeys<R>::names) {
            if (lettersOf(text(name)) == lettersOf(text(key)))
                return text(name);
        }
        return {};
    }
    static QString lettersOf(const QString &key);

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
        wrongType(place, reading.text());
        replace(to, place);
    }

    template <class T>
    static void replace(std::optional<T> &value, const Place &place)
    {
        value.emplace();
        if constexpr (std::same_as<T, QString>)
            value = harmlessText(place);
    }

    static QString harmlessText(const Place &place);
    void wrongType(const Place &place, const QString &reason);
    void ignoredKey(const Place &place, const QString &key, const QString &meant);
    void twice(const Place &place);
    void lookAtText(const Place &place, const std::optional<QString> &value);

    Findings &m_findings;
};

template <Record R>
struct ReadReply {
    /// What the app would get, as ApiClient gives it.
    std::optional<R> record;
    /// What it would get once the wrong values were replaced; nothing for what is no JSON object.
    std::optional<R> replaced;
};

/// Reads a reply's body; the reasons where there is no record, and what else is to be said of its form, go to
/// `findings`. An empty body is none, without a reason here.
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
    } else {
        examiner.notJson(body, reading.text());
    }
    if (!read && findings.count(Severity::Fault) == faultsBefore)
        findings.add(Severity::Fault, Place{}, read.error, {});
    return {std::move(read.record), std::move(replaced)};
}

} // namespace Check
