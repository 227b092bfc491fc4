#pragma once

#include "Findings.h"

#include "Json.h"

namespace Check {

/// What a whole reply is looked through for, value by value, where the app's reader stops at the first wrong one.
/// Every judgement of a type is that reader's.
class Examiner {
public:
    explicit Examiner(Findings &findings) : m_findings(findings) {}

    template <Record R>
    void examine(Json::Element from, const Place &place)
    {
        simdjson::dom::object object;
        if (from.get(object) != simdjson::SUCCESS) {
            Json::Failure failure;
            R scratch;
            Json::readValue(from, scratch, failure);
            wrongType(place, failure.text());
            return;
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
            using Field = std::remove_cvref_t<decltype(std::declval<R>().*field.pointer)>;
            examineField(values[index++], Field(), place.inside(text(field.name)));
        });
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
    void examineField(const std::optional<Json::Element> &from, const std::optional<QList<Row>> &scratch,
                      const Place &place)
    {
        simdjson::dom::array rows;
        if (!from || from->get(rows) != simdjson::SUCCESS) {
            judge(from, scratch, place);
            return;
        }
        qsizetype index = 0;
        for (const Json::Element row : rows)
            examine<Row>(row, Place::rowOf(place.key, index++));
    }

    template <class T>
    void examineField(const std::optional<Json::Element> &from, const T &scratch, const Place &place)
    {
        judge(from, scratch, place);
    }

    template <class T>
    void judge(const std::optional<Json::Element> &from, T scratch, const Place &place)
    {
        Json::Failure failure;
        if (!Json::readField(from, scratch, failure))
            wrongType(place, failure.text());
        else if constexpr (std::same_as<T, std::optional<QString>>)
            lookAtText(place, scratch);
    }

    void wrongType(const Place &place, const QString &reason);
    void ignoredKey(const Place &place, const QString &key, const QString &meant);
    void twice(const Place &place);
    void lookAtText(const Place &place, const std::optional<QString> &value);

    Findings &m_findings;
};

/// The record that the app would get of a reply's body, as ApiClient gives it; the reasons where there is none, and
/// what else is to be said of the body's form, go to `findings`. An empty body is none, without a reason here.
template <Record R>
std::optional<R> readReply(const QByteArray &body, Findings &findings)
{
    if (body.isEmpty())
        return std::nullopt;
    auto read = Json::read<R>(body);
    const qsizetype faultsBefore = findings.count(Severity::Fault);
    Json::Failure failure;
    simdjson::dom::parser parser;
    Json::Element root;
    Examiner examiner(findings);
    if (Json::parse(QByteArrayView(body), failure, parser, root))
        examiner.examine<R>(root, {});
    else
        examiner.notJson(body, failure.text());
    if (!read && findings.count(Severity::Fault) == faultsBefore)
        findings.add(Severity::Fault, Place{}, read.error, {});
    return std::move(read.record);
}

} // namespace Check
