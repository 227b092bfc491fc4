// What SQLite's promise asks of the file calls, looked for in the calls that were made: as this process notes them,
// and in the long form as the kernel sees them.

#include "Checks.h"
#include "FileCalls.h"

#include <QCoreApplication>
#include <QProcess>
#include <QRegularExpression>
#include <QSet>

#include <unistd.h>

using namespace Qt::StringLiterals;
using FileCalls::Call;
using FileCalls::Kind;
using Stores::Folder;
using Stores::Watched;

namespace Checks {
namespace {

/// Follows the calls of a process that makes a store and writes to it, and judges each that matters.
class Judge {
public:
    Judge(Tally &tally, const QByteArray &witness) : m_tally(tally), m_witness(witness + ": ") {}

    void take(const Call &call)
    {
        const bool isLog = call.path.endsWith("-wal");
        const bool isDatabase = call.path.endsWith(".sqlite");
        switch (call.kind) {
        case Kind::MakeDirectory:
            made(call, call.path.endsWith("/marovenda"), 0700);
            break;
        case Kind::Create:
            made(call, true, 0600);
            break;
        case Kind::Mode:
            note("no rights for others", (call.mode & 077) == 0, call);
            break;
        case Kind::Write:
            if (isDatabase)
                note("log synchronised before it is carried over", !m_unsafe.contains(call.path + "-wal"), call);
            else if (isLog && call.at == 0)
                note("database synchronised before the log is used anew", databaseIsSafe(call), call);
            m_unsafe.insert(call.path);
            break;
        case Kind::Truncate:
        case Kind::Remove:
            if (isLog)
                note("database synchronised before the log is used anew", databaseIsSafe(call), call);
            break;
        case Kind::Sync:
            m_unsafe.remove(call.path);
            m_logSynchronised = m_logSynchronised || isLog;
            m_newNames.removeIf(
                [&](const QByteArray &name) { return name.first(name.lastIndexOf('/')) == call.path; });
            break;
        case Kind::Rename:
            break;
        case Kind::Mark:
            ++m_taken;
            note("log synchronised before a write returns", m_logSynchronised && !logIsUnsafe(), call);
            note("names synchronised before a write returns", m_newNames.isEmpty(), call);
            m_logSynchronised = false;
            break;
        }
    }
    qint64 taken() const { return m_taken; }

private:
    void note(const QByteArray &rule, bool held, const Call &call)
    {
        m_tally.note(m_witness + rule, held,
                     call.path + " at " + QByteArray::number(call.at) + ", mode " + QByteArray::number(call.mode, 8) +
                         ", new names " + m_newNames.join(' '));
    }
    void made(const Call &call, bool isOurs, unsigned mode)
    {
        if (isOurs)
            note("made for the user alone", call.mode == mode, call);
        // The index of the log and the journal of the making are of no use after a loss of power.
        if (!call.path.endsWith("-shm") && !call.path.endsWith("-journal"))
            m_newNames.append(call.path);
    }
    bool databaseIsSafe(const Call &call) const { return !m_unsafe.contains(call.path.chopped(4)); }
    bool logIsUnsafe() const
    {
        return std::ranges::any_of(m_unsafe, [](const QByteArray &path) { return path.endsWith("-wal"); });
    }

    Tally &m_tally;
    const QByteArray m_witness;
    /// Files that were written to since they were synchronised, and names whose folder was not synchronised since.
    QSet<QByteArray> m_unsafe;
    QList<QByteArray> m_newNames;
    bool m_logSynchronised = false;
    qint64 m_taken = 0;
};

/// No two alike: SQLite does nothing where a value stays the same.
QByteArray photo(int number) { return (QByteArray::number(number) + ' ').repeated(300'000); }

/// The writes of a process, with photos that make the log be carried over and used anew, and a second start.
template <typename Taken>
void writeSome(const QString &directory, int count, Taken taken)
{
    for (int start = 0; start < 2; ++start) {
        const Watched store(directory);
        for (int i = 1; i <= count / 2; ++i) {
            const Write write(i);
            const bool done = i % 5 == 0 ? store.store->write(SessionStore::Key::UserAvatar, photo(start * count + i))
                                         : store.store->write(write.key(), write.value);
            if (done)
                taken(start * (count / 2) + i);
        }
    }
}

/// One line of strace's: a call with its arguments and its result.
std::optional<Call> callOf(const QString &line, QSet<QByteArray> &existing)
{
    static const QRegularExpression form(uR"(^(\w+)\((.*)\)\s+= (-?\d+))"_s);
    static const QRegularExpression openFile(uR"(^\d+<([^>]*)>(?:, (.*))?$)"_s);
    static const QRegularExpression named(uR"re((?:^|, )"([^"]*)"(?:, (.*))?$)re"_s);
    const auto call = form.match(line);
    if (!call.hasMatch() || call.captured(3).startsWith(u'-'))
        return std::nullopt;
    const QString function = call.captured(1);
    const auto file = openFile.match(call.captured(2));
    const auto name = named.match(call.captured(2));
    const QByteArray opened = file.captured(1).toUtf8();
    const QByteArray path = QDir::cleanPath(name.captured(1)).toUtf8();
    const QString last = call.captured(2).section(u", "_s, -1);
    if (function == u"write" && call.captured(2).contains(u"\"taken "))
        return Call{Kind::Mark, {}, {}, 0, {}, 0};
    if (function == u"mkdir")
        return Call{Kind::MakeDirectory, path, {}, 0, {}, last.toUInt(nullptr, 8)};
    if (function == u"chmod")
        return Call{Kind::Mode, path, {}, 0, {}, last.toUInt(nullptr, 8)};
    if (function == u"fchmod")
        return Call{Kind::Mode, opened, {}, 0, {}, last.toUInt(nullptr, 8)};
    if (function == u"pwrite64")
        return Call{Kind::Write, opened, {}, last.toLongLong(), {}, 0};
    if (function == u"fsync" || function == u"fdatasync")
        return Call{Kind::Sync, opened, {}, 0, {}, 0};
    if (function == u"ftruncate")
        return Call{Kind::Truncate, opened, {}, last.toLongLong(), {}, 0};
    if (function == u"unlink") {
        existing.remove(path);
        return Call{Kind::Remove, path, {}, 0, {}, 0};
    }
    if (function == u"openat" && line.contains(u"O_CREAT") && !existing.contains(path)) {
        existing.insert(path);
        return Call{Kind::Create, path, {}, 0, {}, last.toUInt(nullptr, 8)};
    }
    return std::nullopt;
}

void watchedByTheKernel(Tally &tally, int count)
{
    const Folder folder;
    QDir().mkpath(folder.path());
    const QString log = folder.path() + u"/calls"_s;
    QProcess strace;
    auto environment = QProcessEnvironment::systemEnvironment();
    // Leaks cannot be looked for in a process that is being traced.
    environment.insert(u"ASAN_OPTIONS"_s, u"detect_leaks=0"_s);
    strace.setProcessEnvironment(environment);
    strace.start(u"strace"_s, {u"-qq"_s, u"-y"_s, u"-s"_s, u"12"_s, u"-o"_s, log, u"-e"_s, u"trace=file,desc"_s,
                               QCoreApplication::applicationFilePath(), u"traced"_s, folder.path() + below,
                               QString::number(count)});
    strace.waitForFinished(300'000);
    const bool traced = strace.exitStatus() == QProcess::NormalExit && strace.exitCode() == 0;
    tally.note("strace: could watch", traced,
               "strace is missing, or this machine refuses ptrace: " + strace.errorString().toUtf8() + "; " +
                   strace.readAllStandardError());
    QFile lines(log);
    if (!traced || !lines.open(QFile::ReadOnly))
        return;
    Judge judge(tally, "strace");
    QSet<QByteArray> existing;
    const QByteArray place = QFile::encodeName(folder.path() + u"/data"_s);
    while (!lines.atEnd()) {
        const auto call = callOf(QString::fromUtf8(lines.readLine().trimmed()), existing);
        if (call && (call->kind == Kind::Mark || call->path.startsWith(place) ||
                     (call->kind == Kind::Sync && place.startsWith(call->path + '/'))))
            judge.take(*call);
    }
    tally.note("strace: every write seen", judge.taken() == count, QByteArray::number(judge.taken()));
}

} // namespace

int traced(const QString &directory, int count)
{
    int done = 0;
    writeSome(directory, count, [&](int number) {
        const QByteArray line = "taken " + QByteArray::number(number) + '\n';
        done += ::write(STDOUT_FILENO, line.constData(), static_cast<size_t>(line.size())) == line.size();
    });
    return done == count ? 0 : 1;
}

void promise(Tally &tally, const Form &form)
{
    const int count = form.tries(40, 400);
    const Folder folder;
    FileCalls::watch(QFile::encodeName(folder.path()));
    writeSome(folder.path() + below, count, FileCalls::mark);
    FileCalls::rest();
    Judge judge(tally, "calls");
    const QList<Call> &calls = FileCalls::calls();
    for (const Call &call : calls) {
        // What is above the watched folder is another's.
        if (call.path != QFile::encodeName(folder.path()) || call.kind == Kind::Sync)
            judge.take(call);
    }
    tally.note("calls: every write seen", judge.taken() == count);
    QFile file(folder.path() + below + u"/session.sqlite"_s);
    const QByteArray head = file.open(QFile::ReadOnly) ? file.read(20) : QByteArray();
    tally.note("file says that it is written with a log", head.sliced(18) == "\2\2");
    if (form.isLong)
        watchedByTheKernel(tally, count);
}

} // namespace Checks
