#include "RandomValues.h"

#include <array>
#include <bit>
#include <cmath>
#include <limits>

/// Any code point, also half of a pair, with those that are written specially more often than others.
char32_t RandomValues::codePoint()
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
        return static_cast<char32_t>(below(0x10000));
    case 4:
        return static_cast<char32_t>(0xD800 + below(0x800));
    default:
        return static_cast<char32_t>(0x20 + below(0x60));
    }
}

void RandomValues::fill(QString &text)
{
    // The writer makes room in slices of 16384, over whose borders some texts reach.
    const quint64 length = below(200) == 0 ? 16370 + below(30) : below(24);
    for (quint64 index = 0; index < length; ++index)
        text += QChar::fromUcs4(codePoint());
}

void RandomValues::fill(qint64 &number)
{
    // As many small ones as large ones.
    number = std::bit_cast<qint64>(m_source()) >> below(64);
    constexpr std::array edges = {std::numeric_limits<qint64>::min(), std::numeric_limits<qint64>::max()};
    if (below(16) == 0)
        number = edges[below(2)];
}

void RandomValues::fill(double &number)
{
    constexpr std::array edges = {0.0,
                                  -0.0,
                                  0x1p53,
                                  0x1p63,
                                  -0x1p63,
                                  0x1p64,
                                  std::numeric_limits<double>::min(),
                                  std::numeric_limits<double>::max(),
                                  std::numeric_limits<double>::lowest(),
                                  std::numeric_limits<double>::denorm_min(),
                                  std::numeric_limits<double>::infinity(),
                                  std::numeric_limits<double>::quiet_NaN()};
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
