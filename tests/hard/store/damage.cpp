// A file that was cut or changed: its values are all there, or nobody is signed in and the file is kept, aside or,
// where it now looks like a later version's, in its place.

#include "Checks.h"
#include "FileCalls.h"

#include <QtEndian>

using namespace Qt::StringLiterals;
using Stores::Folder;
using Stores::Values;
using Stores::Watched;
using Random = std::mt19937_64;

namespace Checks {
namespace {

/// A store as it lies on disk, and what it may hold: one of the states that it went through.
struct Subject {
    QByteArray file;
    QByteArray log;
    QList<Values> history;
};

/// A photo without repetitions, on several pages.
QByteArray photo(Random &random, qsizetype size)
{
    QByteArray bytes(size, '\0');
    for (char &byte : bytes)
        byte = static_cast<char>(random());
    return bytes;
}

Values filled(Random &random)
{
    Values values = Stores::sample;
    values[3] = photo(random, 5000);
    return values;
}

Subject closed(const Values &values)
{
    const Folder folder;
    folder.fill(values);
    return {folder.bytes(), {}, {values}};
}

/// A store whose process was killed: all of it, but for the making, is in its log.
Subject leftOpen(const Values &values)
{
    const Folder folder;
    Subject subject{{}, {}, {Values()}};
    const Watched store(folder.path());
    for (std::size_t i = 0; i < values.size(); ++i) {
        Values next = subject.history.last();
        next[i] = values[i];
        store.store->write(SessionStore::keys[i], *values[i]);
        subject.history.append(next);
    }
    subject.file = folder.bytes();
    subject.log = folder.bytes(u"-wal"_s);
    return subject;
}

/// What is wrong with how the store in `folder` starts; empty when nothing is.
QByteArray faultOf(const Folder &folder, const Subject &whole, const QByteArray &file, const QByteArray &log)
{
    {
        Watched store(folder.path());
        const Values found = store.values();
        if (store.replaced) {
            if (!areAbsent(found) || store.reports.size() != 1 || store.reports.first().contains(u'\n'))
                return "put aside, but not with one line: " + store.reports.join(u"; "_s).toUtf8();
            if (folder.bytes(u".damaged-1"_s).size() < file.size())
                return "put aside, but not kept";
        } else if (store.reports.size() == 1 && store.reports.first().contains(u"later version"_s)) {
            const bool isLater = qFromBigEndian<qint32>(file.leftJustified(64, '\0').constData() + 60) > 1;
            store.store.reset();
            const bool same = folder.bytes() == file && folder.bytes(u"-wal"_s) == log;
            return isLater && areAbsent(found) && same ? QByteArray()
                                                       : "taken for a later version, or changed as one"_ba;
        } else {
            if (!whole.history.contains(found))
                return "wrong values: " + tell(found);
            // A log may lose its end: SQLite takes what comes after a damaged place for what was never finished.
            if (log == whole.log && found != whole.history.last())
                return "values lost: " + tell(found);
            if (!store.reports.isEmpty() || !folder.aside().isEmpty())
                return "not put aside, but said: " + store.reports.join(u"; "_s).toUtf8();
        }
        if (!store.store->write(SessionStore::Key::UserNombre, "after"))
            return "cannot be written";
    }
    Watched again(folder.path());
    if (again.values()[1] != "after"_ba || !again.reports.isEmpty())
        return "does not keep what is written";
    return {};
}

void tryOut(Tally &tally, const QByteArray &fault, const QByteArray &what, const Subject &whole,
            const QByteArray &file, const QByteArray &log)
{
    const Folder folder;
    folder.put(file);
    if (!log.isNull())
        folder.put(log, u"-wal"_s);
    const QByteArray wrong = faultOf(folder, whole, file, log);
    tally.note(fault, wrong.isEmpty(), what + ": " + wrong);
}

bool isBoundary(qsizetype length, qsizetype size)
{
    // The file's header, its pages, and in a log the frames of 24 bytes and a page each after a header of 32.
    const auto near = [](qsizetype at) { return at <= 2; };
    const qsizetype inPage = length % 4096;
    const qsizetype inFrame = (length - 32 + 4120) % 4120;
    return length <= 130 || size - length <= 10 || near(inPage) || near(4096 - inPage) || near(inFrame) ||
           near(4120 - inFrame) || near(inFrame - 24);
}

void cuts(Tally &tally, const Form &form, const Subject &closed, const Subject &open)
{
    const auto wanted = [&](qsizetype length, qsizetype size) {
        return isBoundary(length, size) || length % (form.isLong ? 1 : 211) == 0;
    };
    // An empty file is one that a process made and did not live to write to.
    for (qsizetype length = 1; length < closed.file.size(); ++length) {
        if (wanted(length, closed.file.size()))
            tryOut(tally, "file cut", "to " + QByteArray::number(length), closed, closed.file.first(length), {});
    }
    // What comes after a log's last whole frame is left out whatever it is, so not every length is a case of its own.
    for (qsizetype length = 0; length < open.log.size(); ++length) {
        if (wanted(length, open.log.size()) && (length % 4 == 0 || !form.isLong))
            tryOut(tally, "log cut", "to " + QByteArray::number(length), open, open.file, open.log.first(length));
    }
    for (qsizetype length = 0; length < open.file.size(); ++length) {
        if (wanted(length, open.file.size()))
            tryOut(tally, "file cut beside its log", "to " + QByteArray::number(length), open,
                   open.file.first(length), open.log);
    }
}

void fillRange(QByteArray &bytes, qsizetype at, qsizetype size, char with)
{
    for (qsizetype i = at; i < std::min(at + size, bytes.size()); ++i)
        bytes[i] = with;
}

/// Changes bytes in one of many ways.
QByteArray mutated(QByteArray bytes, Random &random)
{
    const qsizetype size = bytes.size();
    // Most often where the tables and rows are described, which is but a small part of the file.
    const qsizetype most = random() % 2 == 0 ? std::min<qsizetype>(size, 8192) : size;
    const qsizetype at = between(random, 0, most - 1);
    const qsizetype length = std::min(between(random, 1, random() % 4 == 0 ? 5000 : 12), size - at);
    // A page for another: its size stays, and what it holds is good.
    if (random() % 9 == 0) {
        const qsizetype one = between(random, 0, size / 4096 - 1) * 4096;
        const qsizetype other = between(random, 0, size / 4096 - 1) * 4096;
        const QByteArray page = bytes.mid(one, 4096);
        return bytes.replace(one, 4096, bytes.mid(other, 4096)).replace(other, 4096, page);
    }
    if (random() % 8 == 0) {
        for (auto flips = between(random, 1, 8); flips > 0; --flips) {
            char &byte = bytes[between(random, 0, most - 1)];
            byte = static_cast<char>(byte ^ (1 << random() % 8));
        }
        return bytes;
    }
    const std::array other{photo(random, length), QByteArray(length, '\0'), QByteArray(length, '\xFF'),
                           bytes.mid(between(random, 0, size - length), length), QByteArray()};
    // In place of as many bytes, between others, or in place of all that follow.
    const std::array replaced{length, length, qsizetype(0), size - at};
    return bytes.replace(at, replaced[random() % replaced.size()], other[random() % other.size()]);
}

void mutations(Tally &tally, const Form &form, const Subject &closed, const Subject &open)
{
    Random random = form.random(5);
    const int tries = form.tries(200, 10'000);
    for (int i = 0; i < tries; ++i)
        tryOut(tally, "file changed", "change " + QByteArray::number(i), closed, mutated(closed.file, random), {});
    for (int i = 0; i < tries / 3; ++i)
        tryOut(tally, "log changed", "change " + QByteArray::number(i), open, open.file, mutated(open.log, random));
}

/// Some bytes become zero, which is how a row says that it holds nothing.
void zeros(Tally &tally, const Form &form, const Subject &closed)
{
    for (const qsizetype length : {1, 2, 3, 9}) {
        for (qsizetype at = 0; at + length <= 8192; ++at) {
            QByteArray file = closed.file;
            fillRange(file, at, length, '\0');
            // Before a row's key stand the kinds of its values.
            const bool matters = at < 120 || QByteArrayView(closed.file).sliced(at, 20).contains("user_");
            if (file != closed.file && (form.isLong || matters))
                tryOut(tally, "bytes become zero", QByteArray::number(length) + " at " + QByteArray::number(at),
                       closed, file, {});
        }
    }
}

/// A damaged store on a disk that refuses one call after the other: the damaged file is never lost.
void damageAndFailure(Tally &tally, const Subject &closed)
{
    QByteArray file = closed.file;
    fillRange(file, 4096, 100, '\x5A');
    FileCalls::Plan plan;
    for (plan.refused = 1;; ++plan.refused) {
        const Folder folder;
        folder.put(file);
        FileCalls::watch(QFile::encodeName(folder.path()), plan);
        QStringList reports;
        bool found = false;
        {
            Watched store(folder.path());
            found = !areAbsent(store.values());
            store.store->write(SessionStore::Key::UserNombre, "after");
            reports = store.reports;
        }
        FileCalls::rest();
        const bool kept = folder.bytes() == file || folder.bytes(u".damaged-1"_s) == file;
        tally.note("file changed, and any one call refused", !found && kept && reports.size() == 1,
                   "call " + QByteArray::number(plan.refused) + ' ' + FileCalls::firstRefused() + ": " +
                       (kept ? "kept; " : "lost; ") + reports.join(u"; "_s).toUtf8());
        if (FileCalls::firstRefused().isEmpty())
            break;
    }
}

} // namespace

void damage(Tally &tally, const Form &form)
{
    Random random = form.random(4);
    const Values values = filled(random);
    const Subject whole = closed(values);
    const Subject open = leftOpen(values);
    cuts(tally, form, whole, open);
    mutations(tally, form, whole, open);
    zeros(tally, form, whole);
    damageAndFailure(tally, whole);
}

} // namespace Checks
