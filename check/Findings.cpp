#include "Findings.h"

#include "Text.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype listedNumbers = 6;

} // namespace

namespace Check {

QString Finding::where() const
{
    if (rows.isEmpty())
        return place;
    QStringList numbers;
    for (qsizetype i = 0; i < std::min(listedNumbers, rows.size()); ++i)
        numbers += QString::number(rows[i]);
    QString list = numbers.join(u", "_s);
    if (rows.size() > listedNumbers)
        list += u" and %1 more"_s.arg(rows.size() - listedNumbers);
    // The first brackets belong to the list; a key may contain brackets too.
    const qsizetype at = place.indexOf("[]"_L1);
    return place.first(at + 1) + list + place.sliced(at + 1);
}

void Findings::add(Severity severity, const Place &place, const QString &what, const QString &remedy)
{
    const QString key = harmless(place.key);
    if (place.list.isEmpty())
        merge({severity, m_endpoint, key.isEmpty() ? u"the reply"_s : key, {}, what, remedy}, -1);
    else
        merge({severity, m_endpoint, place.list + (key.isEmpty() ? u"[]"_s : u"[]."_s + key), {}, what, remedy},
              place.row);
}

void Findings::add(Severity severity, const QString &place, const QString &what, const QString &remedy)
{
    merge({severity, m_endpoint, place, {}, what, remedy}, -1);
}

void Findings::addGeneral(Severity severity, const QString &place, const QString &what, const QString &remedy)
{
    merge({severity, {}, place, {}, what, remedy}, -1);
}

void Findings::merge(Finding finding, qsizetype row)
{
    const QString key = finding.endpoint + u'\n' + finding.place + u'\n' + finding.what;
    const auto known = m_known.constFind(key);
    const qsizetype index = known == m_known.cend() ? m_all.size() : *known;
    if (known == m_known.cend()) {
        m_known.insert(key, index);
        m_all.append(std::move(finding));
    }
    // Rows arrive in order. When the same listing is checked again, skip its known rows.
    QList<qsizetype> &rows = m_all[index].rows;
    if (row >= 0 && (rows.isEmpty() || row > rows.constLast()))
        rows.append(row);
}

qsizetype Findings::count(Severity severity) const
{
    return std::count_if(m_all.begin(), m_all.end(), [&](const Finding &each) { return each.severity == severity; });
}

QList<Finding> Findings::sorted() const
{
    QList<Finding> all = m_all;
    std::stable_sort(all.begin(), all.end(),
                     [](const Finding &one, const Finding &other) { return one.severity < other.severity; });
    return all;
}

} // namespace Check
