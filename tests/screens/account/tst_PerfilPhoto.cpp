#include "MarovendaTest.h"
#include "Modules.h"
#include "PerfilViewModel.h"
#include "PhotoLoader.h"
#include "ServiceTest.h"
#include "Session.h"
#include "StalledFile.h"

#include <QDir>
#include <QPointer>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

#include <algorithm>
#include <atomic>
#include <memory>
#include <optional>
#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace {

/// The view model of a profile, as a page has it.
class Profile {
public:
    Profile() : m_engine(std::make_unique<QQmlEngine>())
    {
        addModules(*m_engine);
        QQmlComponent component(m_engine.get());
        component.setData("import QtQml\nimport Marovenda.Account\n"
                          "QtObject { property PerfilViewModel it: PerfilViewModel {} }",
                          QUrl());
        m_page.reset(component.create());
        viewModel = m_page->property("it").value<PerfilViewModel *>();
        viewModel->mostrarFoto();
    }
    void leave() { m_page.reset(); }
    QByteArray photo() const { return viewModel->property("selectedImageData").toByteArray(); }
    QString msg() const { return viewModel->msgValue(); }

    QPointer<PerfilViewModel> viewModel;

private:
    std::unique_ptr<QQmlEngine> m_engine;
    std::unique_ptr<QObject> m_page;
};

} // namespace

/// The photo that a customer picks, from the file to the service and the session.
class PerfilPhotoTest : public ServiceTest {
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        ServiceTest::init();
        m_folder = std::make_unique<QTemporaryDir>();
    }

    void pickedPhotoIsShownAndSentUntouched_data();
    void pickedPhotoIsShownAndSentUntouched();
    void sameFileTwiceIsOneChange();
    void whatCannotBeLoadedIsNoPhoto_data();
    void whatCannotBeLoadedIsNoPhoto();
    void largestFileIsLoaded();
    void fileThatChangesIsReadToAnEnd();
    void savingDuringALoadSendsThePhotoOfThatMoment();
    void successStoresThePhotoOnShow_data();
    void successStoresThePhotoOnShow();
    void stalledFileHoldsUpNoLaterPick();
    void earlierPickShowsWhereTheLaterCannotBeLoaded();

private:
    static constexpr auto path = "/api_perfil.php";
    static constexpr qint64 largest = qint64(64) * 1024 * 1024;

    /// What loading a file hands over, or nothing.
    static std::optional<LoadedPhoto> loaded(const QUrl &item)
    {
        std::optional<LoadedPhoto> photo;
        auto underWay = std::make_shared<int>();
        const std::weak_ptr<int> isUnderWay = underWay;
        loadPhoto(item, qApp, [&photo, underWay](const LoadedPhoto &result) { photo = result; });
        underWay.reset();
        if (!QTest::qWaitFor([&] { return isUnderWay.expired(); }))
            qFatal("still loading");
        return photo;
    }
    QUrl missing(const QString &name = u"missing"_s) const { return QUrl::fromLocalFile(m_folder->filePath(name)); }
    QUrl file(const QString &name, const QByteArray &bytes) const
    {
        QFile made(m_folder->filePath(name));
        if (!made.open(QFile::WriteOnly) || made.write(bytes) != bytes.size())
            qFatal("cannot write %s", qUtf8Printable(name));
        return QUrl::fromLocalFile(made.fileName());
    }
    QString sentPhoto(int request) const { return sent(path).value(request).value("avatar_base64"_L1).toString(); }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void PerfilPhotoTest::pickedPhotoIsShownAndSentUntouched_data()
{
    QTest::addColumn<QByteArray>("bytes");
    for (int length = 1; length <= 3; ++length)
        QTest::addRow("%d", length) << QByteArray(length, '\0');
    // Large enough for many lines, if there were any.
    QTest::newRow("long") << QByteArray(300'000, '\xFF') + "\r\n\r\n";
}

void PerfilPhotoTest::pickedPhotoIsShownAndSentUntouched()
{
    QFETCH(const QByteArray, bytes);
    const Profile profile;
    profile.viewModel->elegirFoto(file(u"foto ñ #1%20.png"_s, bytes));
    QTRY_COMPARE(profile.photo(), bytes);
    QVERIFY(server.requests().isEmpty());
    QCOMPARE(Session::instance().userAvatarData(), QByteArray());
    profile.viewModel->guardarCambios();
    waitForRequests(1);
    QCOMPARE(sentPhoto(0), QString::fromLatin1(bytes.toBase64()));
    QTRY_VERIFY(!profile.msg().isEmpty());
}

void PerfilPhotoTest::sameFileTwiceIsOneChange()
{
    const Profile profile;
    const QSignalSpy changes(profile.viewModel, &PerfilViewModel::selectedImageDataChanged);
    const QUrl first = file(u"1"_s, "first");
    profile.viewModel->elegirFoto(first);
    QTRY_COMPARE(profile.photo(), "first");
    file(u"1"_s, "changed");
    profile.viewModel->elegirFoto(first);
    profile.viewModel->elegirFoto(file(u"2"_s, "second"));
    QTRY_COMPARE(profile.photo(), "second");
    QCOMPARE(changes.size(), 2);
    // After another one it is a change again.
    profile.viewModel->elegirFoto(first);
    QTRY_COMPARE(profile.photo(), "changed");
}

void PerfilPhotoTest::whatCannotBeLoadedIsNoPhoto_data()
{
    QTest::addColumn<QString>("what");
    for (const char *what : {"missing", "empty", "folder", "pipe", "too large", "unreadable", "remote", "no address"})
        QTest::newRow(what) << QString::fromLatin1(what);
}

void PerfilPhotoTest::whatCannotBeLoadedIsNoPhoto()
{
    QFETCH(const QString, what);
    QUrl item = missing();
    if (what == u"empty"_s)
        item = file(u"x"_s, {});
    else if (what == u"folder"_s)
        item = QUrl::fromLocalFile(m_folder->path());
    else if (what == u"pipe"_s)
        QCOMPARE(mkfifo(item.toLocalFile().toLocal8Bit().constData(), 0600), 0);
    else if (what == u"too large"_s)
        QVERIFY(QFile::resize((item = file(u"x"_s, "x")).toLocalFile(), largest + 1));
    else if (what == u"unreadable"_s)
        item = QUrl::fromLocalFile(u"/proc/self/mem"_s); // for root too: the address 0 cannot be read
    else if (what == u"remote"_s)
        item = QUrl(u"https://example.invalid/x.png"_s);
    else if (what == u"no address"_s)
        item = QUrl();
    QVERIFY(!loaded(item));
}

void PerfilPhotoTest::largestFileIsLoaded()
{
    const QUrl item = file(u"x"_s, "x");
    QVERIFY(QFile::resize(item.toLocalFile(), largest));
    const auto photo = loaded(item);
    QVERIFY(photo);
    QCOMPARE(photo->bytes.size(), largest);
}

void PerfilPhotoTest::fileThatChangesIsReadToAnEnd()
{
    const QUrl item = file(u"x"_s, "x");
    const auto isOpen = [path = item.toLocalFile()] {
        const QFileInfoList files = QDir(u"/proc/self/fd"_s).entryInfoList();
        return std::ranges::any_of(files, [&](const QFileInfo &each) { return each.symLinkTarget() == path; });
    };
    for (const qint64 laterSize : {4 * largest, qint64(100)}) {
        QVERIFY(QFile::resize(item.toLocalFile(), largest - 1));
        std::atomic<bool> over = false;
        const std::unique_ptr<QThread> other(QThread::create([&] {
            while (!over && !isOpen()) {
            }
            QFile::resize(item.toLocalFile(), laterSize);
        }));
        other->start();
        const auto photo = loaded(item);
        over = true;
        other->wait();
        QVERIFY(!photo || photo->bytes.size() <= largest);
    }
}

void PerfilPhotoTest::savingDuringALoadSendsThePhotoOfThatMoment()
{
    const Profile profile;
    profile.viewModel->elegirFoto(file(u"a"_s, "a"));
    profile.viewModel->guardarCambios();
    waitForRequests(1);
    QCOMPARE(sentPhoto(0), QString());
    QTRY_COMPARE(profile.photo(), "a");
    profile.viewModel->elegirFoto(file(u"b"_s, "b"));
    profile.viewModel->guardarCambios();
    waitForRequests(2);
    QCOMPARE(sentPhoto(1), u"YQ=="_s);
    QTRY_COMPARE(profile.photo(), "b");
}

void PerfilPhotoTest::successStoresThePhotoOnShow_data()
{
    const auto row =
        columns<QByteArray, bool, bool, QByteArray, QByteArray>("before", "picks", "leaves", "status", "stored");
    row("picked", "before", true, false, "success", "picked");
    row("picked, then left", "before", true, true, "success", "picked");
    row("picked and refused", "before", true, false, "Success", "meanwhile");
    row("stored before", "before", false, false, "success", "before");
    row("none", "", false, false, "success", "meanwhile");
}

void PerfilPhotoTest::successStoresThePhotoOnShow()
{
    QFETCH(const QByteArray, before);
    QFETCH(const bool, picks);
    QFETCH(const bool, leaves);
    QFETCH(const QByteArray, status);
    QFETCH(const QByteArray, stored);
    Session::instance().setUserAvatarData(before);
    server.hold(path);
    Profile profile;
    QCOMPARE(profile.photo(), before);
    profile.viewModel->guardarCambios();
    waitForRequests(1);
    QCOMPARE(sentPhoto(0), QString());
    // The reply finds another photo than the request.
    if (picks) {
        profile.viewModel->elegirFoto(file(u"x"_s, "picked"));
        QTRY_COMPARE(profile.photo(), "picked");
    }
    Session::instance().setUserAvatarData("meanwhile");
    const QPointer<PerfilViewModel> &viewModel = profile.viewModel;
    const QSignalSpy told(viewModel, &PerfilViewModel::msgChanged);
    if (leaves)
        profile.leave();
    server.held.first()->send(R"({"status":")" + status + "\"}");
    QTRY_COMPARE(told.size(), 1);
    QCOMPARE(Session::instance().userAvatarData(), stored);
    QTRY_COMPARE(viewModel.isNull(), leaves);
}

void PerfilPhotoTest::stalledFileHoldsUpNoLaterPick()
{
    const QUrl early = file(u"early"_s, "early");
    const StalledFile stalled(early.toLocalFile());
    Profile profile;
    const QPointer<PerfilViewModel> &viewModel = profile.viewModel;
    viewModel->elegirFoto(early);
    QTRY_VERIFY(stalled.isWaitedFor());
    viewModel->elegirFoto(file(u"late"_s, "late"));
    QTRY_COMPARE(profile.photo(), "late");
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
    const QUrl item = file(u"early"_s, "early");
    const StalledFile stalled(item.toLocalFile());
    const Profile profile;
    profile.viewModel->elegirFoto(item);
    QTRY_VERIFY(stalled.isWaitedFor());
    profile.viewModel->elegirFoto(missing());
    QVERIFY(!loaded(missing()));
    stalled.letGo();
    QTRY_COMPARE(profile.photo(), "early");
}

MAROVENDA_TEST(PerfilPhotoTest)
#include "tst_PerfilPhoto.moc"
