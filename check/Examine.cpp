#include "Examine.h"

#include "JsonTrouble.h"
#include "Text.h"

#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace {

QString remedyFor(const QString &reason)
{
    if (reason.endsWith("must be text"_L1))
        return u"Send it as a JSON string, as in \"42\" (PHP: (string)$value), or null for none."_s;
    if (reason.endsWith("must be array"_L1))
        return u"Send a JSON array, [] for no rows. PHP writes an array with gaps or names as an object: use "
               "array_values."_s;
    if (reason.endsWith("must be object"_L1))
        return u"Send a JSON object. PHP writes an empty array as []: use (object)[]."_s;
    return {};
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

void Examiner::wrongType(const Place &place, const QString &reason)
{
    m_findings.add(Severity::Fault, place, reason, remedyFor(reason));
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
    if (holdsEntity(*value))
        m_findings.add(Severity::Warning, place,
                       u"contains an HTML entity, which the app does not decode: "_s + quoted(*value, 30),
                       u"Send plain text (PHP: no htmlspecialchars or htmlentities); the app shows no HTML."_s);
}

} // namespace Check
