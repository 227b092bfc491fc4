// The device refuses: each file call in turn, all from one on, every bit of room, every change.

#include "Checks.h"
#include "FileCalls.h"
#include "Session.h"

#include <sys/mman.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using FileCalls::Plan;
using Stores::Folder;
using Stores::Values;
using Stores::Watched;

namespace Checks {
namespace {

const Values fresh{QByteArray("7"), QByteArray("Eva"), QByteArray("eva@marovenda.example"),
                   QByteArray("image ").repeated(2000)};

/// What one life of a store under a plan came to.
struct Life {
    Values found;
    std::array<bool, fresh.size()> taken = {};
    Values then;
    bool replaced = false;
    QStringList reports;
};

/// Reads all values, writes all, reads them again and ends.
Life live(const Folder &folder, const Plan &plan)
{
    Life life;
    FileCalls::watch(QFile::encodeName(folder.path()), plan);
    {
        Watched store(folder.path());
        life.found = store.values();
        life.replaced = store.replaced;
        for (std::size_t i = 0; i < fresh.size(); ++i)
            life.taken[i] = store.store->write(SessionStore::keys[i], *fresh[i]);
        life.then = store.values();
        life.reports = store.reports;
    }
    FileCalls::rest();
    return life;
}

/// What is wrong with a life that began with the values `before`; empty when nothing is.
QByteArray faultOf(const Folder &folder, const Life &life, const Values &before)
{
    bool missed = false;
    for (std::size_t i = 0; i < fresh.size(); ++i) {
        if (life.found[i] && life.found[i] != before[i])
            return "a wrong value was read";
        if (life.then[i] && life.then[i] != before[i] && life.then[i] != fresh[i])
            return "a wrong value was read after writing";
        missed = missed || !life.taken[i] || (!life.found[i] && before[i]) || !life.then[i];
    }
    if (missed && life.reports.isEmpty())
        return "nothing was said";
    if (life.reports.size() > 1 || life.reports.join(QString()).contains(u'\n'))
        return "more than one line was said";
    if (life.replaced || !folder.aside().isEmpty())
        return "a good file was put aside";

    Watched again(folder.path());
    const Values after = again.values();
    if (!again.reports.isEmpty())
        return "the store cannot be read afterwards";
    for (std::size_t i = 0; i < fresh.size(); ++i) {
        if (life.taken[i] ? after[i] != fresh[i] : after[i] != before[i] && after[i] != fresh[i])
            return "a value is neither the old nor the new one";
    }
    return {};
}

bool noteLife(Tally &tally, const QByteArray &fault, const Plan &plan, const Values &before)
{
    const Folder folder;
    if (!areAbsent(before))
        folder.fill(before);
    const Life life = live(folder, plan);
    const QByteArray wrong = faultOf(folder, life, before);
    tally.note(fault, wrong.isEmpty(),
               wrong + ", call " + QByteArray::number(plan.refused) + ' ' + FileCalls::firstRefused() + ", error " +
                   QByteArray::number(plan.error) + ", room " + QByteArray::number(plan.room) + ": " +
                   tell(life.found) + ", then " + tell(life.then) + "; " + life.reports.join(u"; "_s).toUtf8());
    return !FileCalls::firstRefused().isEmpty();
}

/// Each call refused in turn until there is none left to refuse.
void everyCall(Tally &tally, const QByteArray &fault, Plan plan, const Values &before)
{
    for (plan.refused = 1; noteLife(tally, fault, plan, before); ++plan.refused) {
    }
}

/// Every room from none to enough.
void everyRoom(Tally &tally, const Values &before, qint64 step)
{
    Plan plan;
    for (plan.room = 0; noteLife(tally, "disk full after any number of bytes", plan, before); plan.room += step) {
    }
}

/// What the process says on stderr, as long as this lives.
class Said {
public:
    Said() : m_before(dup(STDERR_FILENO)), m_file(memfd_create("stderr", 0)) { dup2(m_file, STDERR_FILENO); }
    ~Said()
    {
        dup2(m_before, STDERR_FILENO);
        ::close(m_before);
        ::close(m_file);
    }
    Said(const Said &) = delete;
    Said &operator=(const Said &) = delete;
    QByteArray text() const
    {
        QByteArray all(lseek(m_file, 0, SEEK_END), '\0');
        return ::pread(m_file, all.data(), static_cast<size_t>(all.size()), 0) == all.size() ? all : QByteArray();
    }

private:
    int m_before;
    int m_file;
};

/// The app's session on a device that fails for the length of its life: its values change as if nothing were wrong,
/// it says one line, and the next start finds the old values.
void session(Tally &tally, const QByteArray &fault, const Plan &plan, bool readable)
{
    const Folder folder;
    folder.fill();
    FileCalls::watch(QFile::encodeName(folder.path()), plan);
    QByteArray text;
    bool runsOn = false;
    {
        const Said said;
        Session session(folder.path());
        runsOn = session.userId() == (readable ? 42 : 0);
        session.setUserId(7);
        session.setUserNombre(u"Eva"_s);
        session.setUserEmail(u"eva@marovenda.example"_s);
        session.setUserAvatarData("image");
        runsOn = runsOn && session.userId() == 7 && session.userNombre() == u"Eva" &&
                 session.userEmail() == u"eva@marovenda.example" && session.userAvatarData() == "image";
        text = said.text();
    }
    FileCalls::rest();
    const bool oneLine = text.startsWith("marovenda: session: ") && text.count('\n') == 1 && text.endsWith('\n') &&
                         text.contains(folder.path().toUtf8());
    Watched again(folder.path());
    const bool intact = again.values() == Stores::sample && again.reports.isEmpty() && folder.aside().isEmpty();
    tally.note(fault, !FileCalls::firstRefused().isEmpty() && runsOn && oneLine && intact,
               "said \"" + text + "\", then " + tell(again.values()));
}

} // namespace

void failures(Tally &tally, const Form &form)
{
    Plan plan;
    for (const int error : {EIO, ENOSPC, EACCES}) {
        plan.error = error;
        plan.forGood = false;
        if (error == EIO || form.isLong) {
            everyCall(tally, "any one file call refused", plan, Stores::sample);
            everyCall(tally, "any one file call refused, new store", plan, Values());
        }
    }
    plan = Plan();
    plan.forGood = true;
    everyCall(tally, "all file calls refused from any one on", plan, Stores::sample);
    everyRoom(tally, Stores::sample, form.isLong ? 256 : 4096);
    everyRoom(tally, Values(), form.isLong ? 256 : 4096);

    Plan full;
    full.room = 0;
    session(tally, "app on a full disk", full, false);
    Plan readOnly;
    readOnly.readOnly = true;
    session(tally, "app on a read-only disk", readOnly, false);
    Plan dead;
    dead.forGood = true;
    dead.refused = 1;
    session(tally, "app on a dead disk", dead, false);
}

} // namespace Checks
