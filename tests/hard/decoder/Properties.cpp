#include "Properties.h"

#include "RandomValues.h"
#include "SecondLibrary.h"
#include "Tally.h"

#include <cmath>

using namespace Qt::StringLiterals;

namespace {

// What reads back: itself, but a half of a pair of surrogates is not a character and becomes U+FFFD.

void expectBack(QString &text)
{
    for (qsizetype index = 0; index < text.size(); ++index) {
        if (text[index].isHighSurrogate() && index + 1 < text.size() && text[index + 1].isLowSurrogate())
            ++index;
        else if (text[index].isSurrogate())
            text[index] = QChar::ReplacementCharacter;
    }
}
void expectBack(double) {}
void expectBack(qint64) {}
template <Record R>
void expectBack(R &record);
template <class T>
void expectBack(QList<T> &rows)
{
    for (T &row : rows)
        expectBack(row);
}
template <class T>
void expectBack(std::optional<T> &value)
{
    if (value)
        expectBack(*value);
}
template <Record R>
void expectBack(R &record)
{
    RecordTools::forEachField(record, [](const char *, auto &value) { expectBack(value); });
}

/// Whether all doubles of a record are finite; `any` becomes true when it has one.
template <Record R>
bool isFinite(const R &record, bool &any)
{
    bool finite = true;
    RecordTools::forEachField(record, [&]<class T>(const char *, const T &value) {
        if constexpr (std::is_same_v<T, double>) {
            any = true;
            finite = finite && std::isfinite(value);
        }
    });
    return finite;
}

/// Returns what is wrong, or nothing.
template <Record R>
QByteArray judge(R record)
{
    bool hasDoubles = false;
    const bool finite = isFinite(record, hasDoubles);
    const auto written = Json::write(record);
    if (written.has_value() != finite)
        return finite ? "refused"_ba : "written with a number that is not finite"_ba;
    if (!written)
        return {};
    expectBack(record);
    const auto read = Json::read<R>(*written);
    if (!read || !RecordTools::same(*read.record, record))
        return "reads back as another: "_ba + *written;
    const auto tree = SecondLibrary::json::parse(written->begin(), written->end(), nullptr, false);
    if (tree.is_discarded() || !SecondLibrary::fits(tree, record) || !SecondLibrary::agrees(tree, record))
        return "is another to the second library: "_ba + *written;
    // Compact, in the order of the fields, and escaped no more than needed: the second library's own form, in which
    // "/" stands for itself. Doubles have more than one shortest form.
    QByteArray form = QByteArray::fromStdString(tree.dump());
    if (!hasDoubles && *written != form.replace("/", "\\/"))
        return "is not written the shortest way: "_ba + *written;
    return {};
}

void note(Tally &tally, const QByteArray &fault, const QByteArray &wrong)
{
    tally.note(fault, wrong.isEmpty(), wrong);
}

} // namespace

int tryProperties(quint64 seed, int count)
{
    RandomValues values(seed);
    Tally tally;
    RecordTools::forEachRecord<RecordTools::All>([&]<Record R>(const R &) {
        const QByteArray fault = RecordTools::name<R> + " written and read again"_ba;
        for (int index = 0; index < count; ++index)
            note(tally, fault, judge(values.record<R>()));
    });
    return tally.finish();
}
