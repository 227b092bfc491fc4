#pragma once

#include <QByteArray>
#include <QList>

#include <cerrno>

/// The file calls of this process (of Qt and SQLite, that is) below one folder: noted, refused, or cut off by death.
/// The program defines the C library's functions itself, so the libraries call these. Only those of the thread that
/// called `watch`.
namespace FileCalls {

enum class Kind { MakeDirectory, Create, Write, Truncate, Sync, Remove, Rename, Mode, Mark };

/// One call that succeeded and that a power loss may undo; or a mark set by a check.
struct Call {
    Kind kind = Kind::Mark;
    QByteArray path = {};
    /// The new name.
    QByteArray to = {};
    /// Where was written, or the new size; the mark's number.
    qint64 at = 0;
    QByteArray bytes = {};
    unsigned mode = 0;
};

enum class Death { None, Before, Halfway, After };

/// What goes wrong. Calls of every kind are counted from 1.
struct Plan {
    /// The call that is refused with `error`, and whether all later ones are, too.
    qint64 refused = 0;
    bool forGood = false;
    int error = EIO;
    /// The call at which the process kills itself.
    qint64 last = 0;
    Death death = Death::None;
    /// By how many bytes files may grow; negative for any number.
    qint64 room = -1;
    bool readOnly = false;
    /// Whether `bytes` are kept.
    bool noteBytes = false;
};

/// From now on, until `rest`, calls below `folder` are watched.
void watch(const QByteArray &folder, const Plan &plan = {});
void mark(qint64 number);
void rest();

/// Of the last watch: the function of the first call that was refused, if any.
const QByteArray &firstRefused();
const QList<Call> &calls();

} // namespace FileCalls
