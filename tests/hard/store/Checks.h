#pragma once

#include "SessionStore.h"
#include "Stores.h"
#include "Tally.h"

#include <QByteArray>

#include <random>

/// What the checks of the store share.
namespace Checks {

struct Form {
    bool isLong = false;
    std::uint64_t seed = 1;

    /// A generator of its own for each check, so that one check's number of tries does not change another's.
    std::mt19937_64 random(std::uint64_t check) const { return std::mt19937_64(seed * 1000 + check); }
    /// How often something is tried.
    int tries(int quick, int many) const { return isLong ? many : quick; }
};

/// From `least` to `most`, both included.
inline qint64 between(std::mt19937_64 &random, qint64 least, qint64 most)
{
    return least + static_cast<qint64>(random() % static_cast<std::uint64_t>(most - least + 1));
}

/// The store's folder in a check; the ones above it are missing at first.
inline const auto below = QStringLiteral("/data/marovenda");

/// The write with a number: always the same one, and no two alike.
struct Write {
    explicit Write(qint64 number);

    std::size_t index;
    SessionStore::Key key() const { return SessionStore::keys[index]; }
    QByteArray value;
};

/// The values after the write `number`, on top of `values`.
Stores::Values after(Stores::Values values, qint64 number);

inline bool areAbsent(const Stores::Values &values)
{
    return std::ranges::none_of(values, [](const auto &value) { return value.has_value(); });
}

/// A name for what a store holds, short enough to be told.
QByteArray tell(const Stores::Values &values);

void kills(Tally &tally, const Form &form);
void powerLoss(Tally &tally, const Form &form);
void failures(Tally &tally, const Form &form);
void damage(Tally &tally, const Form &form);
void together(Tally &tally, const Form &form);
void largePhoto(Tally &tally, const Form &form);

} // namespace Checks
