#include "RandomRecords.h"

#include "SecondLibrary.h"
#include "Tally.h"

#include <array>
#include <bit>
#include <cmath>
#include <limits>
#include <random>

using namespace Qt::StringLiterals;

namespace {

/// Fills records with what is hard to write and to read.
class Filler {
public:
    explicit Filler(quint64 seed) : m_source(seed) {}

    void fill(QString &text)
    {
        // The writer makes room in slices of 16384, over whose borders some texts reach.
        const quint64 length = below(200) == 0 ? 16370 + below(30) : below(24);
        for (quint64 index = 0; index < length; ++index)
            text += QChar::fromUcs4(codePoint());
    }
    void fill(qint64 &number)
    {
        // As many small ones as large ones.
        number = std::bit_cast<qint64>(m_source()) >> below(64);
        constexpr std::array edges = {std::numeric_limits<qint64>::min(), std::numeric_limits<qint64>::max()};
        if (below(16) == 0)
            number = edges[below(2)];
    }
    void fill(double &number)
    {
        using Limits = std::numeric_limits<double>;
        constexpr std::array edges = {0.0,
                                      -0.0,
                                      0x1p53,
                                      0x1p63,
                                      -0x1p63,
                                      0x1p64,
                                      Limits::min(),
                                      Limits::max(),
                                      Limits::lowest(),
                                      Limits::denorm_min(),
                                      Limits::infinity(),
                                      Limits::quiet_NaN()};
        switch (below(4)) {
        case 0:
            number = edges[below(edges.size())];
            break;
        case 1: // what customers type
            number = static_cast<double>(below(1'000'000)) / 100;
            break;
        case 2:
            number = static_cast<double>(std::bit_cast<qint64>(m_source()) >> below(64));
            break;
        default: // any bits, so that infinities and no numbers are among them
            number = std::bit_cast<double>(m_source());
        }
    }
    template <class T>
    void fill(std::optional<T> &value)
    {
        if (below(4) > 0)
            fill(value.emplace());
    }
    template <class T>
    void fill(QList<T> &rows)
    {
        rows.resize(static_cast<qsizetype>(below(4)));
        for (T &row : rows)
            fill(row);
    }
    template <Record R>
    void fill(R &record)
    {
        RecordTools::forEachField(record, [this](const char *, auto &value) { this->fill(value); });
    }

private:
    quint64 below(quint64 limit) { return m_source() % limit; }

    /// Any code point, also half of a pair, with those that are written specially more often than others.
    char32_t codePoint()
    {
        constexpr std::u32string_view special =
            U"\"\\/\b\f\n\r\t\x7F\u0080\u07FF\u0800\u2028\uFEFF\uFFFD\uFFFF\U00010000\U0010FFFF";
        switch (below(8)) {
        case 0:
            return special[below(special.size())];
        case 1:
            return static_cast<char32_t>(below(0x20));
        case 2:
            return static_cast<char32_t>(below(0x110000));
        case 3:
            return static_cast<char32_t>(0xD800 + below(0x800));
        default:
            return static_cast<char32_t>(0x20 + below(0x60));
        }
    }

    std::mt19937_64 m_source;
};

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

/// Returns what is wrong, or nothing.
template <Record R>
QByteArray judge(R record)
{
    bool hasDoubles = false;
    bool finite = true;
    RecordTools::forEachField(record, [&]<class T>(const char *, const T &value) {
        if constexpr (std::is_same_v<T, double>) {
            hasDoubles = true;
            finite = finite && std::isfinite(value);
        }
    });
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

} // namespace

void tryRandomRecords(Tally &tally, quint64 seed, int count)
{
    Filler filler(seed);
    RecordTools::forEachRecord<RecordTools::All>([&]<Record R>(const R &) {
        for (int index = 0; index < count; ++index) {
            R record;
            filler.fill(record);
            const QByteArray wrong = judge(record);
            tally.note(RecordTools::name<R> + " written and read again"_ba, wrong.isEmpty(), wrong);
        }
    });
}
