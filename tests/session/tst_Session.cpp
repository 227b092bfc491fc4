#include "MarovendaTest.h"
#include "PostponedWrites.h"
#include "Session.h"
#include "Stores.h"

#include <QSignalSpy>
#include <QTest>

#include <sqlite3.h>

#include <limits>

using namespace Qt::StringLiterals;
using Stores::Folder;

/// The four values as the screens see them.
class SessionTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void everyNumberIsKept_data();
    void everyNumberIsKept();
    void everyTextIsKept_data();
    void everyTextIsKept();
    void preparedValuesAreThere();
    void writesWaitForAnotherProcessElsewhere();
    void postponedWritesSurviveTheProcess_data();
    void postponedWritesSurviveTheProcess();
    void postponedWritesToADamagedStoreAreVoid();
    void logOfALargePhotoIsShortenedLater();
    void everyObserverHearsEachChangeOnce();
    void writingTheSameValueIsNoChange();
    void valueIsThereWhenItsObserversHear();
    void customerIsToldInOrderWhenAllIsThere();
    void customerIsStoredAtOnce();
    void signingOutKeepsTheRest();
    void withoutAStoreTheValuesLiveOn();
    void damagedStoreStartsSignedOut();
    void damagedStoreThatCannotBeMovedStartsSignedOut();
    void damagedPhotoSignsOut();
    void newPhotoOverADamagedOneSignsOut();
    void sessionOfTheProcessLivesInTheUsersData();
    void nothingIsOpenedBeforeItsFirstUse();

private:
    static void damage(const Folder &folder, const QByteArray &key)
    {
        Stores::run(folder.file(), "UPDATE session SET value = X'00' WHERE key = '" + key + '\'');
    }
    static void expectNobody(Session &session)
    {
        QCOMPARE(session.userId(), 0);
        QVERIFY(!session.someoneSignedIn());
        QCOMPARE(session.userNombre(), QString());
        QCOMPARE(session.userEmail(), QString());
        QCOMPARE(session.userAvatarData(), QByteArray());
    }
};

namespace {

/// Counts the four notifications of a session.
struct Observer {
    explicit Observer(Session &session)
        : id(&session, &Session::userIdChanged), nombre(&session, &Session::userNombreChanged),
          email(&session, &Session::userEmailChanged), avatar(&session, &Session::userAvatarDataChanged)
    {
    }
    QList<qsizetype> counts() const { return {id.count(), nombre.count(), email.count(), avatar.count()}; }

    QSignalSpy id;
    QSignalSpy nombre;
    QSignalSpy email;
    QSignalSpy avatar;
};

/// The store as another process has it open.
class Database {
public:
    explicit Database(const QString &path) { check(sqlite3_open(QFile::encodeName(path).constData(), &m_database)); }
    ~Database() { sqlite3_close(m_database); }
    Database(const Database &) = delete;
    Database &operator=(const Database &) = delete;
    void run(const char *sql) { check(sqlite3_exec(m_database, sql, nullptr, nullptr, nullptr)); }

private:
    static void check(int code) { QCOMPARE(code, SQLITE_OK); }

    sqlite3 *m_database = nullptr;
};

void signIn(Session &session)
{
    session.setUserId(42);
    session.setUserNombre(u"Ana Núñez"_s);
    session.setUserEmail(u"ana@marovenda.example"_s);
    session.setUserAvatarData("photo");
}

} // namespace

void SessionTest::everyNumberIsKept_data()
{
    const auto row = columns<qint64, bool>("number", "someone");
    row("zero", 0, false);
    row("one", 1, true);
    row("minus one", -1, true);
    row("most", std::numeric_limits<qint64>::max(), true);
    row("least", std::numeric_limits<qint64>::min(), true);
}

void SessionTest::everyNumberIsKept()
{
    QFETCH(const qint64, number);
    QFETCH(const bool, someone);
    const Folder folder;
    Session(folder.path()).setUserId(number);
    Session session(folder.path());
    QCOMPARE(session.userId(), number);
    QCOMPARE(session.someoneSignedIn(), someone);
}

void SessionTest::everyTextIsKept_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("accents") << u"Ñandú Güell"_s;
    QTest::newRow("beyond the first plane") << u"📦𝒳"_s;
    QTest::newRow("zero inside") << QString::fromLatin1("a\0b", 3);
    QTest::newRow("byte-order mark first") << u"\uFEFFAna"_s;
    QTest::newRow("blanks") << u"  \n "_s;
    QTest::newRow("very long") << u"ñ"_s.repeated(500'000);
    QTest::newRow("empty") << u""_s;
}

void SessionTest::everyTextIsKept()
{
    QFETCH(const QString, text);
    const Folder folder;
    {
        Session session(folder.path());
        session.setUserNombre(u"before"_s);
        session.setUserEmail(u"before"_s);
        session.setUserNombre(text);
        session.setUserEmail(text);
    }
    Session session(folder.path());
    QVERIFY(session.userNombre() == text);
    QVERIFY(session.userEmail() == text);
}

void SessionTest::preparedValuesAreThere()
{
    const Folder folder;
    folder.fill();
    Session session(folder.path());
    session.prepare();
    QCOMPARE(session.userNombre(), u"Ana Núñez"_s);
    QCOMPARE(session.userAvatarData(), *Stores::sample[3]);
    damage(folder, "user_avatar");
    Session damaged(folder.path());
    damaged.prepare();
    expectNobody(damaged);
    // Preparing a store and leaving it makes it.
    const Folder made;
    Session left(made.path());
    left.prepare();
    left.finish();
    QVERIFY(QFile::exists(made.file()));
}

void SessionTest::writesWaitForAnotherProcessElsewhere()
{
    const Folder folder;
    Session session(folder.path());
    signIn(session);
    Database other(folder.file());
    other.run("BEGIN IMMEDIATE");
    session.setUserNombre(u"Eva"_s);
    session.setUserEmail(u"eva@b.example"_s);
    // Written after the others although the store is free by then.
    other.run("COMMIT");
    session.setUserNombre(u"Eva Díaz"_s);
    session.finish();
    // What is written after that is written at once.
    session.setUserId(7);
    Session again(folder.path());
    QCOMPARE(again.userNombre(), u"Eva Díaz"_s);
    QCOMPARE(again.userEmail(), u"eva@b.example"_s);
    QCOMPARE(again.userId(), 7);
}

void SessionTest::postponedWritesSurviveTheProcess_data()
{
    const auto row = columns<int, QString>("cut", "nombre");
    row("whole", 0, u"Eva Díaz"_s);
    row("the last write is incomplete", 1, u"Eva"_s);
    row("the last write is missing", 26, u"Eva"_s);
}

void SessionTest::postponedWritesSurviveTheProcess()
{
    QFETCH(const int, cut);
    QFETCH(const QString, nombre);
    const Folder folder;
    folder.fill();
    Session session(folder.path());
    Database other(folder.file());
    other.run("BEGIN IMMEDIATE");
    session.setCustomer(7, u"Eva"_s, u"eva@b.example"_s);
    session.setUserNombre(u"Eva Díaz"_s);
    // What a killed process leaves.
    const Folder left;
    const auto files = folder.files();
    for (auto file = files.begin(); file != files.end(); ++file)
        left.put(file.value(), file.key().mid(qsizetype(sizeof "session.sqlite") - 1));
    const QString postponed = left.file(u"-postponed"_s);
    QCOMPARE(QFile::permissions(folder.file(u"-postponed"_s)) & ~QFile::ReadUser & ~QFile::WriteUser,
             QFile::ReadOwner | QFile::WriteOwner);
    QVERIFY(QFile::resize(postponed, QFileInfo(postponed).size() - cut));
    other.run("COMMIT");
    session.finish();
    QVERIFY(!folder.files().contains(u"session.sqlite-postponed"_s));
    // A write that the next process adds follows what is complete.
    PostponedWrites(left.file()).read();
    PostponedWrites(left.file()).add({{SessionStore::Key::UserEmail, "eva@c.example"}});
    for (const bool prepares : {true, false}) {
        Session next(left.path());
        if (prepares)
            next.prepare();
        QCOMPARE(next.userId(), 7);
        QCOMPARE(next.userNombre(), nombre);
        QCOMPARE(next.userEmail(), u"eva@c.example"_s);
        next.finish();
        QVERIFY(!QFile::exists(postponed));
    }
}

void SessionTest::postponedWritesToADamagedStoreAreVoid()
{
    const Folder folder;
    folder.fill();
    PostponedWrites(folder.file()).add({{SessionStore::Key::UserId, "7"}});
    damage(folder, "user_email");
    Session session(folder.path());
    expectNobody(session);
    QVERIFY(!folder.files().contains(u"session.sqlite-postponed"_s));
}

void SessionTest::logOfALargePhotoIsShortenedLater()
{
    const Folder folder;
    const QByteArray photo = QByteArray("\xFF\xD8\0\x01", 4).repeated(qsizetype(5) * 1024 * 256);
    Session session(folder.path());
    session.setUserAvatarData(photo);
    QVERIFY(QFileInfo(folder.file()).size() < photo.size());
    QTRY_VERIFY(QFileInfo(folder.file()).size() > photo.size());
    QVERIFY(Session(folder.path()).userAvatarData() == photo);
}

void SessionTest::everyObserverHearsEachChangeOnce()
{
    const Folder folder;
    Session session(folder.path());
    const Observer one(session);
    const Observer other(session);
    const auto expect = [&](const QList<qsizetype> &counts) {
        QCOMPARE(one.counts(), counts);
        QCOMPARE(other.counts(), counts);
    };
    session.setUserId(42);
    expect({1, 0, 0, 0});
    session.setUserNombre(u"Ana"_s);
    expect({1, 1, 0, 0});
    session.setUserEmail(u"a@b.example"_s);
    expect({1, 1, 1, 0});
    session.setUserAvatarData("photo");
    expect({1, 1, 1, 1});
    session.setUserId(0);
    session.setUserNombre({});
    session.setUserEmail({});
    session.setUserAvatarData({});
    expect({2, 2, 2, 2});
}

void SessionTest::writingTheSameValueIsNoChange()
{
    const Folder folder;
    {
        Session session(folder.path());
        signIn(session);
    }
    Session session(folder.path());
    const Observer observer(session);
    signIn(session);
    QCOMPARE(observer.counts(), (QList<qsizetype>{0, 0, 0, 0}));
}

void SessionTest::valueIsThereWhenItsObserversHear()
{
    const Folder folder;
    Session session(folder.path());
    QStringList heard;
    connect(&session, &Session::userIdChanged, this, [&] { heard += QString::number(session.userId()); });
    connect(&session, &Session::userNombreChanged, this, [&] { heard += session.userNombre(); });
    connect(&session, &Session::userEmailChanged, this, [&] { heard += session.userEmail(); });
    connect(&session, &Session::userAvatarDataChanged, this,
            [&] { heard += QString::fromUtf8(session.userAvatarData()); });
    // In the file too: whoever hears of a value may end the process.
    connect(&session, &Session::userIdChanged, this,
            [&] { heard += QString::number(Session(folder.path()).userId()) + u" stored"_s; });
    signIn(session);
    QCOMPARE(heard, (QStringList{u"42"_s, u"42 stored"_s, u"Ana Núñez"_s, u"ana@marovenda.example"_s, u"photo"_s}));
}

void SessionTest::customerIsToldInOrderWhenAllIsThere()
{
    const Folder folder;
    Session session(folder.path());
    QStringList heard;
    const auto all = [](Session &of) { return u"%1 %2 %3"_s.arg(of.userId()).arg(of.userNombre(), of.userEmail()); };
    const auto hear = [&](const QString &what) { return [&, what] { heard += what + all(session); }; };
    connect(&session, &Session::userIdChanged, this, hear(u"id: "_s));
    connect(&session, &Session::userNombreChanged, this, hear(u"nombre: "_s));
    connect(&session, &Session::userEmailChanged, this, hear(u"email: "_s));
    connect(&session, &Session::userIdChanged, this,
            [&] { heard += u"stored: "_s + all(*std::make_unique<Session>(folder.path())); });
    session.setCustomer(42, u"Ana"_s, u"a@b"_s);
    QCOMPARE(heard, (QStringList{u"id: 42 Ana a@b"_s, u"stored: 42 Ana a@b"_s, u"nombre: 42 Ana a@b"_s,
                                 u"email: 42 Ana a@b"_s}));
    heard.clear();
    session.setCustomer(42, u"Eva"_s, u"a@b"_s);
    session.setCustomer(42, u"Eva"_s, u"a@b"_s);
    QCOMPARE(heard, QStringList(u"nombre: 42 Eva a@b"_s));
}

void SessionTest::customerIsStoredAtOnce()
{
    const Folder folder;
    folder.fill();
    Session session(folder.path());
    QCOMPARE(session.userId(), 42);
    // A store that takes the number and the name, but no e-mail.
    Stores::run(folder.file(), "CREATE TRIGGER no_email BEFORE UPDATE ON session WHEN NEW.key = 'user_email' "
                               "BEGIN SELECT RAISE(FAIL, 'no'); END");
    session.setCustomer(7, u"Eva"_s, u"eva@b"_s);
    // In memory it counts all the same.
    QCOMPARE(session.userId(), 7);
    QCOMPARE(session.userNombre(), u"Eva"_s);
    QCOMPARE(session.userEmail(), u"eva@b"_s);
    Session again(folder.path());
    QCOMPARE(again.userId(), 42);
    QCOMPARE(again.userNombre(), u"Ana Núñez"_s);
    QCOMPARE(again.userEmail(), u"ana@marovenda.example"_s);
}

void SessionTest::signingOutKeepsTheRest()
{
    const Folder folder;
    {
        Session session(folder.path());
        signIn(session);
        session.setUserId(0);
    }
    Session session(folder.path());
    QVERIFY(!session.someoneSignedIn());
    QCOMPARE(session.userNombre(), u"Ana Núñez"_s);
    QCOMPARE(session.userEmail(), u"ana@marovenda.example"_s);
    QCOMPARE(session.userAvatarData(), "photo"_ba);
}

void SessionTest::withoutAStoreTheValuesLiveOn()
{
    // A file in the place of its folder, and a later version's store.
    for (const bool later : {false, true}) {
        const Folder folder;
        folder.fill();
        Stores::run(folder.file(), later ? "PRAGMA user_version = 2" : "");
        const QString directory = later ? folder.path() : folder.file();
        const auto files = folder.files();
        {
            Session session(directory);
            session.prepare();
            expectNobody(session);
            const Observer observer(session);
            signIn(session);
            session.setUserEmail(u"b@b.example"_s);
            QCOMPARE(session.userId(), 42);
            QCOMPARE(session.userNombre(), u"Ana Núñez"_s);
            QCOMPARE(session.userEmail(), u"b@b.example"_s);
            QCOMPARE(session.userAvatarData(), "photo"_ba);
            QCOMPARE(observer.counts(), (QList<qsizetype>{1, 1, 2, 1}));
        }
        QVERIFY(folder.files() == files);
        Session again(directory);
        expectNobody(again);
    }
}

void SessionTest::damagedStoreStartsSignedOut()
{
    for (const char *key : {"user_id", "user_nombre", "user_email"}) {
        const Folder folder;
        folder.fill();
        damage(folder, key);
        Session session(folder.path());
        expectNobody(session);
        QCOMPARE(folder.aside(), QStringList(u"session.sqlite.damaged-1"_s));
        signIn(session);
        QCOMPARE(Session(folder.path()).userId(), 42);
    }
}

void SessionTest::damagedStoreThatCannotBeMovedStartsSignedOut()
{
    const Folder folder;
    folder.fill();
    // The id is read before the e-mail's damage is seen.
    damage(folder, "user_email");
    // A name that is taken without being seen.
    QVERIFY(QFile::link(folder.path() + u"/missing/nowhere"_s, folder.file(u".damaged-1"_s)));
    const QByteArray bytes = folder.bytes();
    Session session(folder.path());
    expectNobody(session);
    signIn(session);
    QCOMPARE(session.userId(), 42);
    QVERIFY(folder.bytes() == bytes);
}

void SessionTest::damagedPhotoSignsOut()
{
    const Folder folder;
    folder.fill();
    damage(folder, "user_avatar");
    Session session(folder.path());
    QCOMPARE(session.userId(), 42);
    const Observer observer(session);
    bool nobodyWhenHeard = false;
    connect(&session, &Session::userIdChanged, this, [&] { nobodyWhenHeard = !session.someoneSignedIn(); });
    QCOMPARE(session.userAvatarData(), QByteArray());
    QVERIFY(nobodyWhenHeard);
    QCOMPARE(observer.counts(), (QList<qsizetype>{1, 1, 1, 1}));
    expectNobody(session);
    QCOMPARE(folder.aside(), QStringList(u"session.sqlite.damaged-1"_s));
    Session again(folder.path());
    expectNobody(again);
}

void SessionTest::newPhotoOverADamagedOneSignsOut()
{
    const Folder folder;
    folder.fill();
    damage(folder, "user_avatar");
    Session session(folder.path());
    session.setUserAvatarData("new");
    QVERIFY(!session.someoneSignedIn());
    QCOMPARE(session.userAvatarData(), "new"_ba);
    Session again(folder.path());
    QVERIFY(!again.someoneSignedIn());
    QCOMPARE(again.userAvatarData(), "new"_ba);
}

void SessionTest::sessionOfTheProcessLivesInTheUsersData()
{
    Session &session = Session::instance();
    QCOMPARE(&Session::instance(), &session);
    session.setUserId(7);
    const QString home = qEnvironmentVariable("XDG_DATA_HOME");
    QVERIFY(!home.isEmpty());
    QCOMPARE(Session(home + u"/marovenda-test"_s).userId(), 7);
}

void SessionTest::nothingIsOpenedBeforeItsFirstUse()
{
    const Folder folder;
    Session session(folder.path());
    QVERIFY(!QFile::exists(folder.file()));
    expectNobody(session);
    QVERIFY(QFile::exists(folder.file()));
}

MAROVENDA_TEST(SessionTest)
#include "tst_Session.moc"
