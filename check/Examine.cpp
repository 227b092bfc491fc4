#include "Examine.h"

#include "JsonTrouble.h"
#include "Text.h"

#include <QHash>
#include <QRegularExpression>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

/// How to fix a value of the wrong type. The first row whose patterns match counts.
struct Remedy {
    enum Where { Anywhere, Row, Whole };
    Where where;
    /// The end of the reader's reason.
    QLatin1StringView reason;
    const char16_t *remedy;
};

constexpr Remedy remedies[]{
    {Remedy::Anywhere, "boolean, must be text"_L1,
     u"Send a text that says it (a \"status\" is \"success\" or \"error\"), or null for none."},
    {Remedy::Anywhere, "array, must be text"_L1,
     u"Send one text, for example the parts joined (PHP: implode(\", \", $list)), or null for none."},
    {Remedy::Anywhere, "object, must be text"_L1,
     u"Send one text, for example one field of the object (PHP: $value[\"name\"]), or null for none."},
    {Remedy::Anywhere, "must be text"_L1,
     u"Send it as a JSON string, as in \"42\" (PHP: (string)$value), or null for none."},
    {Remedy::Anywhere, "object, must be array"_L1,
     u"Send a JSON array, [] for no rows. PHP writes an array with gaps or names as an object: use array_values."},
    {Remedy::Anywhere, "must be array"_L1, u"Send a JSON array, [] for no rows."},
    {Remedy::Row, "null, must be object"_L1,
     u"Leave the row out (PHP: array_values(array_filter($rows))); each row is an object."},
    {Remedy::Row, "array, must be object"_L1,
     u"Send each row as an object with keys (PHP: PDO::FETCH_ASSOC or mysqli_fetch_assoc, no numbered columns)."},
    {Remedy::Row, "must be object"_L1, u"Send each row as an object with keys: {\"tracking\": \"…\"}."},
    {Remedy::Whole, "array, must be object"_L1,
     u"Send the object itself, without a list around it. PHP writes an empty array as []: use (object)[]."},
    {Remedy::Whole, "must be object"_L1,
     u"Send a JSON object. PHP prints null for a variable that is not set, and nothing or false for a text "
     "that is not UTF-8."},
};

QString remedyFor(const Check::Place &place, const QString &reason)
{
    const auto where = !place.key.isEmpty() ? Remedy::Anywhere : place.list.isEmpty() ? Remedy::Whole : Remedy::Row;
    const auto *const found = std::ranges::find_if(
        remedies, [&](const Remedy &each) { return each.where == where && reason.endsWith(each.reason); });
    return found == std::end(remedies) ? QString() : QString::fromUtf16(found->remedy);
}

/// Returns whether the value is a text that is a JSON object or array.
bool isJsonInText(Json::Element value)
{
    std::string_view text;
    Json::Reading reading;
    simdjson::dom::parser parser;
    Json::Element inside;
    return value.get(text) == simdjson::SUCCESS &&
           Json::parse(QByteArrayView(text.data(), static_cast<qsizetype>(text.size())), reading, parser, inside) &&
           (inside.is_object() || inside.is_array());
}

bool holdsHtml(const QString &text)
{
    static const QRegularExpression pattern(
        u"<[/]?(a|b|br|center|code|div|em|font|h[1-6]|hr|i|img|li|ol|p|pre|script|small|span|strong|style|sub|sup|"
        "table|td|th|tr|u|ul)(\\s[^<>]*)?/?>"_s,
        QRegularExpression::CaseInsensitiveOption);
    return text.contains(pattern);
}

/// Returns whether the text looks like UTF-8 that was read as Latin-1 or Windows-1252 and encoded again.
bool isEncodedTwice(const QString &text)
{
    static const QRegularExpression pattern(
        u"\\x{C3}[\\x{80}-\\x{BF}\\x{0152}-\\x{2122}]|\\x{C2}[\\x{80}-\\x{BF}]"_s);
    return text.contains(pattern);
}

bool holdsEntity(const QString &text)
{
    static const QRegularExpression pattern(u"&(#[0-9]{1,6}|#x[0-9A-Fa-f]{1,6}|[A-Za-z]{2,8});"_s);
    return text.contains(pattern);
}

} // namespace

namespace Check {

QString Examiner::lettersOf(const QString &key)
{
    QString letters;
    for (const QChar each : key.normalized(QString::NormalizationForm_KD).toLower()) {
        if (each.isLetterOrNumber())
            letters += each;
    }
    return letters;
}

bool Examiner::meansTheSame(const QString &letters, const QString &name)
{
    static const QHash<QString, QString> meanings{
        {u"packages"_s, u"paquetes"_s},
        {u"parcels"_s, u"paquetes"_s},
        {u"quotes"_s, u"cotizaciones"_s},
        {u"quotations"_s, u"cotizaciones"_s},
        {u"userid"_s, u"id"_s},
        {u"idusuario"_s, u"id"_s},
        {u"name"_s, u"nombre"_s},
        {u"fullname"_s, u"nombreCompleto"_s},
        {u"nombre"_s, u"nombreCompleto"_s},
        {u"mensaje"_s, u"message"_s},
        {u"description"_s, u"descripcion"_s},
        {u"origin"_s, u"origen"_s},
        {u"trackingnumber"_s, u"tracking"_s},
        {u"guia"_s, u"tracking"_s},
        {u"state"_s, u"estado"_s},
    };
    return meanings.value(letters) == name;
}

QString Examiner::harmlessText(const Place &place)
{
    return place.key == "status"_L1 ? u"success"_s : u"%1 %2"_s.arg(place.key).arg(place.row);
}

void Examiner::notJson(const QByteArray &body, const QString &reason)
{
    if (const auto trouble = findJsonTrouble(body))
        m_findings.add(Severity::Fault, trouble->place(body), trouble->what, trouble->remedy);
    else
        m_findings.add(Severity::Fault, Place{}, reason, {});
}

void Examiner::aroundJson(const QByteArray &body)
{
    for (const JsonTrouble &trouble : findAroundJson(body))
        m_findings.add(Severity::Note, trouble.place(body), trouble.what, trouble.remedy);
}

void Examiner::wrongType(const Place &place, const QString &reason, Json::Element found)
{
    if (isJsonInText(found))
        m_findings.add(Severity::Fault, place, reason + u": it is JSON that was encoded twice"_s,
                       u"Encode the whole reply once (PHP: one json_encode)."_s);
    else
        m_findings.add(Severity::Fault, place, reason, remedyFor(place, reason));
}

void Examiner::tooDeep(const Place &place, const QString &key, const QStringList &inside)
{
    m_findings.add(Severity::Warning, place.inside(key),
                   u"ignored by the app, which reads \"%1\" one level up"_s.arg(inside.join(u"\", \""_s)),
                   u"Send these keys beside \"status\", not inside another key."_s);
}

void Examiner::ignoredKey(const Place &place, const QString &key, const QString &meant)
{
    if (meant.isEmpty())
        m_findings.add(Severity::Note, place.inside(key), u"ignored by the app"_s, {});
    else
        m_findings.add(Severity::Warning, place.inside(key), u"ignored by the app, which reads \"%1\""_s.arg(meant),
                       u"Write the key as the app does; letter case and underscores count."_s);
}

void Examiner::twice(const Place &place)
{
    m_findings.add(Severity::Warning, place, u"duplicate key; the last one counts"_s, u"Send each key once."_s);
}

void Examiner::lookAtText(const Place &place, const std::optional<QString> &value)
{
    if (!value)
        return;
    if (value->contains(QChar::ReplacementCharacter))
        m_findings.add(Severity::Warning, place, u"contains U+FFFD, which replaces a lost character"_s,
                       u"Check where the text is converted; store and send UTF-8 throughout."_s);
    if (isEncodedTwice(*value))
        m_findings.add(Severity::Warning, place, u"looks like UTF-8 encoded twice: "_s + quoted(*value, 30),
                       u"Do not convert text that is UTF-8 already (PHP: utf8_encode)."_s);
    if (holdsHtml(*value))
        m_findings.add(Severity::Note, place,
                       u"contains HTML, which the app shows as it stands: "_s + quoted(*value, 30),
                       u"Send plain text."_s);
    if (holdsEntity(*value))
        m_findings.add(Severity::Warning, place,
                       u"contains an HTML entity, which the app does not decode: "_s + quoted(*value, 30),
                       u"Send plain text (PHP: no htmlspecialchars or htmlentities); the app shows no HTML."_s);
}

} // namespace Check
