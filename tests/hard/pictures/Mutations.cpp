#include "Mutations.h"

#include "Corpus.h"
#include "PhotoDecoder.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <ctime>
#include <random>

namespace {

constexpr double longestSeconds = 3;

double threadSeconds()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

/// Whether the decoder gives what it promises for any bytes: nothing, or a picture of this size, and that soon.
bool keepsItsPromise(const QByteArray &bytes, int diameter, PhotoShape shape)
{
    const double start = threadSeconds();
    const QImage decoded = decodePhoto(bytes, diameter, shape);
    return (decoded.isNull() || decoded.size() == QSize(diameter, diameter)) &&
           threadSeconds() - start < longestSeconds;
}

/// A standard engine used without the standard distributions, whose numbers differ from library to library.
class Damage {
public:
    explicit Damage(quint32 seed) : m_random(seed) {}

    qsizetype below(qsizetype limit) { return limit > 0 ? static_cast<qsizetype>(m_random() % limit) : 0; }

    void apply(QByteArray &bytes, const QByteArray &other)
    {
        const qsizetype at = below(bytes.size());
        const qsizetype length = below(std::min<qsizetype>(64, bytes.size() - at)) + 1;
        switch (below(9)) {
        case 0:
            bytes[at] = static_cast<char>(bytes[at] ^ (1 << below(8)));
            break;
        case 1:
            bytes[at] = static_cast<char>(below(256));
            break;
        case 2:
            std::fill_n(bytes.begin() + at, std::min(length, bytes.size() - at), below(2) ? '\0' : '\xFF');
            break;
        case 3:
            bytes.remove(at, length);
            break;
        case 4:
            bytes.insert(at, QByteArray(bytes.constData() + at, std::min(length, bytes.size() - at)).repeated(3));
            break;
        case 5:
            bytes.replace(at, 4, number());
            break;
        case 6:
            bytes.replace(at, length, other.mid(below(other.size()), length));
            break;
        case 7:
            // Most of what matters stands at the front.
            bytes[below(std::min<qsizetype>(48, bytes.size()))] = static_cast<char>(below(256));
            break;
        default:
            bytes.truncate(std::max<qsizetype>(bytes.size() - length, 16));
        }
    }

private:
    /// One that lengths and sizes are often not checked against.
    QByteArray number()
    {
        constexpr std::array<const char *, 8> all{"\xFF\xFF\xFF\xFF", "\x7F\xFF\xFF\xFF", "\x80\x00\x00\x00",
                                                  "\x00\x00\x00\x00", "\x00\x00\x40\x00", "\xFF\xFF\x00\x00",
                                                  "\x00\x00\x00\x01", "\x00\x40\x00\x40"};
        return {all[below(all.size())], 4};
    }

    std::mt19937 m_random;
};

int tell(const char *what, const QByteArray &format, qint64 which)
{
    std::printf("%s %s %lld\n", what, format.constData(), static_cast<long long>(which));
    return 1;
}

} // namespace

int tryMutations(const QByteArray &format, quint32 from, int count)
{
    const QList<QByteArray> good = corpus(format);
    int failures = 0;
    for (quint32 seed = from; seed - from < static_cast<quint32>(count); ++seed) {
        Damage damage(seed);
        QByteArray bytes = good[damage.below(good.size())];
        for (qsizetype more = damage.below(4); more >= 0; --more)
            damage.apply(bytes, good[damage.below(good.size())]);
        // With wrong checksums nearly all would end at the first chunk.
        if (format == "png" && damage.below(4))
            bytes = withRightChecksums(bytes);
        const auto shape = damage.below(2) ? PhotoShape::Circle : PhotoShape::Square;
        if (!keepsItsPromise(bytes, 1 + static_cast<int>(damage.below(200)), shape))
            failures += tell("mutation", format, seed);
    }
    return failures;
}

int tryCuts(const QByteArray &format, int steps)
{
    int failures = 0;
    for (const QByteArray &good : corpus(format)) {
        if (decodePhoto(good, 20).isNull())
            failures += tell("refused", format, good.size());
        for (int step = 0; step < steps; ++step) {
            const qsizetype length = good.size() * step / steps;
            if (!keepsItsPromise(good.first(length), 20, PhotoShape::Circle))
                failures += tell("cut", format, length);
        }
    }
    return failures;
}
