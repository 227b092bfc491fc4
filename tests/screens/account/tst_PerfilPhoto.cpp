#include "MarovendaTest.h"
#include "PerfilTest.h"
#include "PerfilViewModel.h"
#include "PhotoLoader.h"
#include "StalledFile.h"

#include <QPointer>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QSignalSpy>
#include <QThread>
#include <QTimer>

#include <atomic>
#include <memory>
#include <optional>
#include <sys/stat.h>

class PerfilPhotoTest : public PerfilTest {
    Q_OBJECT
private Q_SLOTS:
    void init() { PerfilTest::init(); }
    void cleanup() { ServiceTest::cleanup(); }

    void storedPhotoIsShownAndNotSent();
    void storedBytesThatAreNoPhotoShowThePlaceholder();
    void pickedPhotoIsShownAndSentUntouched_data();
    void pickedPhotoIsShownAndSentUntouched();
    void laterPickReplacesBoth();
    void sameFileTwiceIsOneChange();
    void whatCannotBeLoadedChangesNothing_data();
    void whatCannotBeLoadedChangesNothing();
    void pickedBytesThatAreNoPhotoAreSentAllTheSame();
    void savingDuringALoadSendsTheValueOfThatMoment();
    void largePhotoDoesNotStopTheScreen();
    void successStoresThePhotoOnShowWhenTheReplyComes();
    void successWritesTheStoredPhotoBack();
    void successWithoutAPhotoStoresNone();
    void lateSuccessStoresThePhoto();
    void savedPhotoShowsOnTheDashboard();
    void stalledFileHoldsUpNoLaterPick();
    void earlierPickShowsWhereTheLaterCannotBeLoaded();
    void abandonedProfileEndsOnTheMainThread_data();
    void abandonedProfileEndsOnTheMainThread();

private:
    /// What loading a file hands over, or nothing.
    static std::optional<LoadedPhoto> loaded(const QUrl &item)
    {
        std::optional<LoadedPhoto> photo;
        auto underWay = std::make_shared<int>();
        const std::weak_ptr<int> isUnderWay = underWay;
        loadPhoto(item, qApp, [&photo, underWay](const LoadedPhoto &result) { photo = result; });
        underWay.reset();
        if (!QTest::qWaitFor([&] { return isUnderWay.expired(); }))
            qWarning("still loading");
        return photo;
    }
};

namespace {

/// The view model of a profile, as a page has it.
class Profile {
public:
    Profile() : m_engine(std::make_unique<QQmlEngine>())
    {
        QQmlComponent component(m_engine.get());
        component.setData("import QtQml\nimport Marovenda.Account\n"
                          "QtObject { property PerfilViewModel it: PerfilViewModel {} }",
                          QUrl());
        m_page.reset(component.create());
        viewModel = m_page->property("it").value<PerfilViewModel *>();
    }
    void leave() { m_page.reset(); }
    void endTheEngine() { m_engine.reset(); }
    QByteArray photo() const { return viewModel->property("selectedImageData").toByteArray(); }

    QPointer<PerfilViewModel> viewModel;

private:
    std::unique_ptr<QQmlEngine> m_engine;
    std::unique_ptr<QObject> m_page;
};

} // namespace

void PerfilPhotoTest::storedPhotoIsShownAndNotSent()
{
    const QByteArray stored = picture(Qt::green);
    Session::instance().setUserAvatarData(stored);
    TestScreen screen(perfil());
    QCOMPARE(photo(screen), stored);
    QTRY_VERIFY(decoded(screen));
    // The photo in a circle, with a blue outline of 2 over its edge.
    const QImage drawn = screen.picture();
    const QRect at = TestScreen::box(screen.find(u"avatar"_s)).toRect();
    QCOMPARE(drawn.pixelColor(at.center()), QColor(Qt::green));
    QCOMPARE(drawn.pixelColor(at.left() + 5, at.top() + 5), QColor(244, 244, 244));
    const QColor edge = drawn.pixelColor(at.left(), at.center().y());
    QVERIFY2(edge.blue() > 200 && edge.red() < 100, qPrintable(edge.name()));
    press(screen);
    waitForRequests(1);
    QCOMPARE(sentAvatar(), QString());
}

void PerfilPhotoTest::storedBytesThatAreNoPhotoShowThePlaceholder()
{
    Session::instance().setUserAvatarData("no photo");
    TestScreen screen(perfil());
    QCOMPARE(photo(screen), "no photo");
    // A photo that does decode comes after the one that does not.
    QSignalSpy shown(screen.find(u"avatar"_s), SIGNAL(decodedChanged()));
    const QRect at = TestScreen::box(screen.find(u"avatar"_s)).toRect();
    QVERIFY(!decoded(screen));
    const QColor shoulder = screen.picture().pixelColor(at.center().x(), at.bottom() - 3);
    QVERIFY2(shoulder.blue() > 200 && shoulder.red() < 100, qPrintable(shoulder.name()));
    pick(screen, file(u"a.png"_s, picture(Qt::red)));
    QTRY_VERIFY(decoded(screen));
    QCOMPARE(shown.size(), 1);
}

void PerfilPhotoTest::pickedPhotoIsShownAndSentUntouched_data()
{
    QTest::addColumn<QByteArray>("bytes");
    const QByteArray png = picture(Qt::red);
    for (int extra = 0; extra < 3; ++extra)
        QTest::addRow("PNG and %d", extra) << png + QByteArray(extra, '\0');
    QTest::newRow("JPEG") << picture(Qt::red, "jpeg");
    // Large enough for many lines, if there were any.
    QTest::newRow("long") << png + QByteArray(100'000, '\xFF') + "\r\n\r\n";
}

void PerfilPhotoTest::pickedPhotoIsShownAndSentUntouched()
{
    QFETCH(QByteArray, bytes);
    TestScreen screen(perfil());
    pick(screen, file(u"foto ñ #1%20.png"_s, bytes));
    QVERIFY(comesToShow(screen, bytes));
    QTRY_VERIFY(decoded(screen));
    const QRect at = TestScreen::box(screen.find(u"avatar"_s)).toRect();
    QVERIFY(screen.picture().pixelColor(at.center()).red() > 250);
    QCOMPARE(msg(screen), QString());
    QVERIFY(server.requests().isEmpty());
    QCOMPARE(Session::instance().userAvatarData(), QByteArray());
    press(screen);
    waitForRequests(1);
    const QByteArray base64 = bytes.toBase64(QByteArray::Base64Encoding | QByteArray::KeepTrailingEquals);
    QCOMPARE(server.requests().first().body,
             R"({"user_id":42,"nombre":"Ana","email":"","password":"","avatar_base64":")" +
                 QByteArray(base64).replace("/", "\\/") + "\"}");
}

void PerfilPhotoTest::laterPickReplacesBoth()
{
    TestScreen screen(perfil());
    const QByteArray second = picture(Qt::green);
    pick(screen, file(u"1.png"_s, picture(Qt::red)));
    pick(screen, file(u"2.png"_s, second));
    QVERIFY(comesToShow(screen, second));
    press(screen);
    waitForRequests(1);
    QCOMPARE(sentAvatar(), QString::fromLatin1(second.toBase64()));
}

void PerfilPhotoTest::sameFileTwiceIsOneChange()
{
    TestScreen screen(perfil());
    QSignalSpy changes(view(screen), SIGNAL(photoChanged()));
    const QUrl first = file(u"1.png"_s, picture(Qt::red));
    pick(screen, first);
    QTRY_COMPARE(changes.size(), 1);
    const QByteArray later = picture(Qt::blue);
    file(u"1.png"_s, later);
    pick(screen, first);
    const QByteArray other = picture(Qt::green);
    pick(screen, file(u"2.png"_s, other));
    QVERIFY(comesToShow(screen, other));
    QCOMPARE(changes.size(), 2);
    // After another one it is a change again.
    pick(screen, first);
    QVERIFY(comesToShow(screen, later));
}

void PerfilPhotoTest::whatCannotBeLoadedChangesNothing_data()
{
    QTest::addColumn<QString>("what");
    for (const char *what :
         {"vanished", "empty", "folder", "pipe", "too large", "unreadable", "remote", "no address"})
        QTest::newRow(what) << QString::fromLatin1(what);
}

void PerfilPhotoTest::whatCannotBeLoadedChangesNothing()
{
    QFETCH(QString, what);
    QUrl item = QUrl::fromLocalFile(path(u"x.png"_s));
    if (what == u"empty"_s)
        file(u"x.png"_s, {});
    else if (what == u"folder"_s)
        item = QUrl::fromLocalFile(m_folder->path());
    else if (what == u"pipe"_s)
        QCOMPARE(mkfifo(path(u"x.png"_s).toLocal8Bit().constData(), 0600), 0);
    else if (what == u"too large"_s)
        QVERIFY(QFile::resize(file(u"x.png"_s, picture(Qt::red)).toLocalFile(), 64 * 1024 * 1024 + 1));
    else if (what == u"unreadable"_s)
        item = QUrl::fromLocalFile(u"/proc/self/mem"_s); // for root too: the address 0 cannot be read
    else if (what == u"remote"_s)
        item = QUrl(u"https://example.invalid/x.png"_s);
    else if (what == u"no address"_s)
        item = QUrl();

    QVERIFY(!loaded(item));
    const QByteArray stored = picture(Qt::green);
    Session::instance().setUserAvatarData(stored);
    server.reply("/api_perfil.php", R"({"status":"success"})");
    TestScreen screen(perfil());
    QTRY_VERIFY(decoded(screen));
    QSignalSpy changes(view(screen), SIGNAL(photoChanged()));
    pick(screen, item);
    const QByteArray next = picture(Qt::red);
    pick(screen, file(u"next.png"_s, next));
    QVERIFY(comesToShow(screen, next));
    QCOMPARE(changes.size(), 1);
    QCOMPARE(msg(screen), QString());
    press(screen);
    QVERIFY(comesToSay(screen, saved));
    QCOMPARE(sentAvatar(), QString::fromLatin1(next.toBase64()));
}

void PerfilPhotoTest::pickedBytesThatAreNoPhotoAreSentAllTheSame()
{
    Session::instance().setUserAvatarData(picture(Qt::green));
    server.reply("/api_perfil.php", R"({"status":"success"})");
    TestScreen screen(perfil());
    QTRY_VERIFY(decoded(screen));
    pick(screen, file(u"x.png"_s, "no photo"));
    QTRY_VERIFY(!decoded(screen));
    const QRect at = TestScreen::box(screen.find(u"avatar"_s)).toRect();
    QVERIFY(screen.picture().pixelColor(at.center().x(), at.bottom() - 3).red() < 100);
    QCOMPARE(msg(screen), QString());
    press(screen);
    QVERIFY(comesToSay(screen, saved));
    QCOMPARE(sentAvatar(), u"bm8gcGhvdG8="_s);
    QCOMPARE(Session::instance().userAvatarData(), "no photo");
}

void PerfilPhotoTest::savingDuringALoadSendsTheValueOfThatMoment()
{
    TestScreen screen(perfil());
    const QByteArray bytes = picture(Qt::red);
    pick(screen, file(u"a.png"_s, bytes));
    pressAtOnce(screen);
    waitForRequests(1);
    QCOMPARE(sentAvatar(0), QString());
    QVERIFY(comesToShow(screen, bytes));
    pick(screen, file(u"b.png"_s, picture(Qt::green)));
    pressAtOnce(screen);
    waitForRequests(2);
    QCOMPARE(sentAvatar(1), QString::fromLatin1(bytes.toBase64()));
}

void PerfilPhotoTest::largePhotoDoesNotStopTheScreen()
{
    QByteArray bytes = picture(Qt::red);
    const QByteArray pattern("a photo's many bytes \xFF\x00\x7F", 24);
    while (bytes.size() < 12 * 1024 * 1024)
        bytes += pattern;
    const QUrl item = file(u"large.png"_s, bytes);
    server.reply("/api_perfil.php", R"({"status":"success"})");
    TestScreen screen(perfil());
    int turns = 0;
    int turnsAtTheEnd = -1;
    QTimer timer;
    connect(&timer, &QTimer::timeout, &timer, [&] {
        ++turns;
        if (turnsAtTheEnd < 0 && photo(screen).size() == bytes.size())
            turnsAtTheEnd = turns;
    });
    timer.start(0);
    pick(screen, item);
    QCOMPARE(photo(screen), QByteArray());
    QTRY_VERIFY(turnsAtTheEnd >= 0);
    QVERIFY2(turnsAtTheEnd > 2, qPrintable(QString::number(turnsAtTheEnd)));
    timer.stop();
    QTRY_VERIFY(decoded(screen));
    press(screen);
    QTRY_COMPARE_WITH_TIMEOUT(msg(screen), saved, 12'000);
    QVERIFY(sentAvatar() == QString::fromLatin1(bytes.toBase64()));
    QVERIFY(Session::instance().userAvatarData() == bytes);
}

void PerfilPhotoTest::successStoresThePhotoOnShowWhenTheReplyComes()
{
    server.hold("/api_perfil.php");
    TestScreen screen(perfil());
    pick(screen, file(u"a.png"_s, picture(Qt::red)));
    QTRY_VERIFY(!photo(screen).isEmpty());
    press(screen);
    waitForRequests(1);
    const QByteArray later = picture(Qt::green);
    pick(screen, file(u"b.png"_s, later));
    QVERIFY(comesToShow(screen, later));
    server.held.first()->send(R"({"status":"success"})");
    QVERIFY(comesToSay(screen, saved));
    QCOMPARE(Session::instance().userAvatarData(), later);
}

void PerfilPhotoTest::successWritesTheStoredPhotoBack()
{
    const QByteArray stored = picture(Qt::green);
    Session::instance().setUserAvatarData(stored);
    server.reply("/api_perfil.php", R"({"status":"success"})");
    TestScreen screen(perfil());
    Session::instance().setUserAvatarData("another");
    press(screen);
    QVERIFY(comesToSay(screen, saved));
    QCOMPARE(Session::instance().userAvatarData(), stored);
}

void PerfilPhotoTest::successWithoutAPhotoStoresNone()
{
    server.reply("/api_perfil.php", R"({"status":"success"})");
    TestScreen screen(perfil());
    Session::instance().setUserAvatarData("another");
    press(screen);
    QVERIFY(comesToSay(screen, saved));
    QCOMPARE(Session::instance().userAvatarData(), "another");
}

void PerfilPhotoTest::lateSuccessStoresThePhoto()
{
    server.hold("/api_perfil.php");
    TestScreen screen(opened());
    open(screen);
    const QByteArray picked = picture(Qt::red);
    pick(screen, file(u"a.png"_s, picked));
    QVERIFY(comesToShow(screen, picked));
    press(screen);
    waitForRequests(1);
    leave(screen);
    QTRY_VERIFY(screen.all(u"guardar"_s).isEmpty());
    QCOMPARE(Session::instance().userAvatarData(), QByteArray());
    server.held.first()->send(R"({"status":"success"})");
    QTRY_COMPARE(Session::instance().userAvatarData(), picked);
}

void PerfilPhotoTest::savedPhotoShowsOnTheDashboard()
{
    server.reply("/api_perfil.php", R"({"status":"success"})");
    TestScreen screen("NavigationContainer { root: Component { DashboardView { objectName: 'home'; screens: "
                      "ServiceScreens {} } } }");
    const QQuickItem *const home = screen.find(u"home"_s);
    screen.tap(screen.named(u"Perfil"_s));
    QTRY_VERIFY(screen.settledAt(2));
    screen.type(screen.find(u"nombre"_s), u"Bea"_s);
    QCOMPARE(screen.find(u"greeting"_s, home)->property("text").toString(), u"Hola, Bea"_s);
    const QByteArray picked = picture(Qt::red);
    pick(screen, file(u"a.png"_s, picked));
    QVERIFY(comesToShow(screen, picked));
    QVERIFY(screen.find(u"photo"_s, home)->property("photo").toByteArray().isEmpty());
    press(screen);
    QTRY_COMPARE(screen.find(u"photo"_s, home)->property("photo").toByteArray(), picked);
    leave(screen);
    QTRY_VERIFY(screen.find(u"photo"_s, home)->property("decoded").toBool());
}

void PerfilPhotoTest::stalledFileHoldsUpNoLaterPick()
{
    const QUrl early = file(u"early.png"_s, picture(Qt::red));
    const QByteArray late = picture(Qt::green);
    const StalledFile stalled(early.toLocalFile());
    Profile profile;
    const QPointer<PerfilViewModel> &viewModel = profile.viewModel;
    viewModel->elegirFoto(early);
    QTRY_VERIFY(stalled.isWaitedFor());
    viewModel->elegirFoto(file(u"late.png"_s, late));
    QTRY_COMPARE(profile.photo(), late);
    // The earlier one comes after all, too late to be shown or sent; the view model waits for it.
    const QSignalSpy changes(viewModel, &PerfilViewModel::selectedImageDataChanged);
    const QSignalSpy textChanges(viewModel, &PerfilViewModel::avatarBase64Changed);
    profile.leave();
    QVERIFY(viewModel);
    stalled.letGo();
    QTRY_VERIFY(!viewModel);
    QCOMPARE(changes.size(), 0);
    QCOMPARE(textChanges.size(), 0);
}

void PerfilPhotoTest::earlierPickShowsWhereTheLaterCannotBeLoaded()
{
    const QByteArray early = picture(Qt::red);
    const QUrl item = file(u"early.png"_s, early);
    const StalledFile stalled(item.toLocalFile());
    Profile profile;
    profile.viewModel->elegirFoto(item);
    QTRY_VERIFY(stalled.isWaitedFor());
    const QUrl missing = QUrl::fromLocalFile(path(u"missing.png"_s));
    profile.viewModel->elegirFoto(missing);
    QVERIFY(!loaded(missing));
    stalled.letGo();
    QTRY_COMPARE(profile.photo(), early);
}

void PerfilPhotoTest::abandonedProfileEndsOnTheMainThread_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("photo") << picture(Qt::red);
    QTest::newRow("cannot be loaded") << QByteArray();
}

void PerfilPhotoTest::abandonedProfileEndsOnTheMainThread()
{
    QFETCH(const QByteArray, bytes);
    const QUrl item = file(u"x.png"_s, bytes);
    const StalledFile stalled(item.toLocalFile());
    Profile profile;
    profile.viewModel->elegirFoto(item);
    QTRY_VERIFY(stalled.isWaitedFor());
    std::atomic<QThread *> endedOn = nullptr;
    connect(
        profile.viewModel, &QObject::destroyed, this, [&] { endedOn = QThread::currentThread(); },
        Qt::DirectConnection);
    profile.leave();
    // Without an engine to wait for it goes at once, wherever the last that held it is.
    profile.endTheEngine();
    stalled.letGo();
    QTRY_VERIFY(endedOn);
    QCOMPARE(endedOn, QThread::currentThread());
}

MAROVENDA_TEST_MAIN(PerfilPhotoTest)
#include "tst_PerfilPhoto.moc"
