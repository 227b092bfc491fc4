#include "MarovendaTest.h"
#include "ServiceTest.h"
#include "Session.h"
#include "TestScreen.h"

#include <QAccessible>
#include <QBuffer>
#include <QFile>
#include <QInputMethodEvent>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <sys/stat.h>

using namespace Qt::StringLiterals;

class PerfilViewTest : public ServiceTest {
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup() { ServiceTest::cleanup(); }

    void startsWithTheStoredNameAlone();
    void layoutHasTheDesignedMeasures();
    void savingUntouchedSendsTheStoredName();
    void savingSendsWhatIsTyped();
    void nameIsStoredKeystrokeByKeystroke();
    void nameFollowsTheSession();
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
    void outcomeOfSaving_data();
    void outcomeOfSaving();
    void successStoresThePhotoOnShowWhenTheReplyComes();
    void successWritesTheStoredPhotoBack();
    void successWithoutAPhotoStoresNone();
    void lateSuccessStoresThePhoto();
    void savedPhotoShowsOnTheDashboard();
    void leavingDiscardsAllButTheName();
    void messageStaysUntilTheNextOne();
    void everyPressSendsOneMoreRequest();
    void unfinishedTextIsSent();
    void returnInAFieldSendsNothing();
    void messageIsAnnounced();
    void everythingIsReadInOrder();
    void nothingIsCut_data();
    void nothingIsCut();

private:
    /// On a container's bottom, so that it comes on screen at once.
    static QByteArray perfil() { return "NavigationContainer { root: Component { PerfilView {} } }"; }
    /// Opened from another screen by its button.
    static QByteArray opened()
    {
        return R"qml(NavigationContainer {
            root: Component {
                AppScreen {
                    id: home
                    PrimaryButton { objectName: "open"; width: 200; text: "Abrir"; onClicked: home.push(next) }
                }
            }
            property Component next: Component { PerfilView {} }
        })qml";
    }
    static bool settledAt(TestScreen &screen, int depth)
    {
        return screen.root()->property("depth").toInt() == depth && !screen.root()->property("moving").toBool();
    }
    static void open(TestScreen &screen)
    {
        screen.tap(screen.find(u"open"_s));
        QTRY_VERIFY(settledAt(screen, 2));
    }
    static void leave(TestScreen &screen)
    {
        screen.tap(screen.named(u"Atrás"_s));
        QTRY_VERIFY(settledAt(screen, 1));
    }
    static QString msg(TestScreen &screen) { return screen.find(u"msg"_s)->property("text").toString(); }
    static QByteArray photo(TestScreen &screen) { return screen.find(u"avatar"_s)->property("photo").toByteArray(); }
    /// What draws the photo and tells of each new one.
    static QQuickItem *view(TestScreen &screen) { return screen.find(u"avatar"_s)->childItems().first(); }
    static bool decoded(TestScreen &screen) { return screen.find(u"avatar"_s)->property("decoded").toBool(); }
    static bool comesToShow(TestScreen &screen, const QByteArray &bytes)
    {
        return QTest::qWaitFor([&] { return photo(screen) == bytes; });
    }
    static bool comesToSay(TestScreen &screen, const QString &text)
    {
        return QTest::qWaitFor([&] { return msg(screen) == text; });
    }
    static void press(TestScreen &screen) { screen.tap(screen.find(u"guardar"_s)); }
    /// A press that lets nothing else happen meanwhile.
    static void pressAtOnce(TestScreen &screen)
    {
        QAccessible::queryAccessibleInterface(screen.find(u"guardar"_s))
            ->actionInterface()
            ->doAction(QAccessibleActionInterface::pressAction());
    }
    static void pick(TestScreen &screen, const QUrl &file)
    {
        QVERIFY(QMetaObject::invokeMethod(screen.find(u"picker"_s), "picked", Q_ARG(QUrl, file)));
    }
    static QByteArray picture(const QColor &color, const char *format = "png")
    {
        QImage image(20, 20, QImage::Format_RGB32);
        image.fill(color);
        QByteArray bytes;
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::WriteOnly);
        if (!image.save(&buffer, format))
            qFatal("cannot write %s", format);
        return bytes;
    }
    QString path(const QString &name) const { return m_folder->filePath(name); }
    QUrl file(const QString &name, const QByteArray &bytes) const
    {
        QFile made(path(name));
        if (!made.open(QFile::WriteOnly) || made.write(bytes) != bytes.size())
            qFatal("cannot write %s", qUtf8Printable(name));
        return QUrl::fromLocalFile(path(name));
    }
    QString sentAvatar(int request = 0) const
    {
        return sent("/api_perfil.php").value(request).value("avatar_base64"_L1).toString();
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

static const QColor blue(0x00, 0x7A, 0xFF);
static const QString saved = u"Perfil actualizado con éxito"_s;
static const QString failure = u"Error al actualizar"_s;

void PerfilViewTest::init()
{
    ServiceTest::init();
    m_folder = std::make_unique<QTemporaryDir>();
    Session::instance().setUserId(42);
    Session::instance().setUserNombre(u"Ana"_s);
    Session::instance().setUserEmail(u"ana@x"_s);
}

void PerfilViewTest::startsWithTheStoredNameAlone()
{
    TestScreen screen(perfil());
    QCOMPARE(screen.find(u"nombre"_s)->property("text").toString(), u"Ana"_s);
    QCOMPARE(screen.find(u"nombre"_s)->property("hint").toString(), u"Nombre Completo"_s);
    QCOMPARE(screen.find(u"email"_s)->property("text").toString(), QString());
    QVERIFY(!screen.find(u"nombre"_s)->property("isDecimal").toBool());
    QVERIFY(!screen.find(u"email"_s)->property("isDecimal").toBool());
    const QStringList shown{u"Mi Perfil"_s, u"Toca la imagen para cambiar foto"_s, u"Correo"_s, u"Guardar Cambios"_s};
    QCOMPARE(screen.texts(), shown);
    QVERIFY(!decoded(screen));
    QVERIFY(!screen.find(u"picker"_s)->isVisible());
    // An empty message keeps its line.
    QVERIFY(screen.find(u"msg"_s)->isVisible());
    QCOMPARE(screen.find(u"msg"_s)->height(), 22);
    QVERIFY(server.requests().isEmpty());
}

void PerfilViewTest::layoutHasTheDesignedMeasures()
{
    TestScreen screen(perfil());
    const auto box = [&](const QString &name) { return TestScreen::box(screen.find(name)); };
    QCOMPARE(box(u"avatar"_s).size(), QSizeF(100, 100));
    QCOMPARE(box(u"avatar"_s).center().x(), 195);
    const QQuickItem *const hint = screen.named(u"Toca la imagen para cambiar foto"_s);
    QCOMPARE(TestScreen::box(hint).top() - box(u"avatar"_s).bottom(), 16);
    QCOMPARE(hint->property("font").value<QFont>().pixelSize(), 12);
    QCOMPARE(hint->property("color").value<QColor>(), QColor(0x8E, 0x8E, 0x93));
    // A caption's line and 16 below it.
    QCOMPARE(box(u"nombre"_s).top() - TestScreen::box(hint).top(), 16 + 16 + 16);
    QCOMPARE(box(u"nombre"_s).left(), 24);
    QCOMPARE(box(u"nombre"_s).size(), QSizeF(390 - 48, 54));
    QCOMPARE(box(u"email"_s).top() - box(u"nombre"_s).bottom(), 16);
    QCOMPARE(box(u"email"_s).size(), QSizeF(390 - 48, 54));
    QCOMPARE(box(u"guardar"_s).top() - box(u"email"_s).bottom(), 12 + 16);
    QCOMPARE(box(u"guardar"_s).left(), 24);
    QCOMPARE(box(u"guardar"_s).size(), QSizeF(390 - 48, 54));
    QCOMPARE(box(u"msg"_s).top() - box(u"guardar"_s).bottom(), 16);
    const auto part = [&](const char *name) {
        return screen.find(u"guardar"_s)->property(name).value<QQuickItem *>();
    };
    QCOMPARE(part("background")->property("radius").toReal(), 20);
    QCOMPARE(part("background")->property("color").value<QColor>(), blue);
    QCOMPARE(part("contentItem")->property("color").value<QColor>(), QColor(Qt::white));
    QCOMPARE(part("contentItem")->property("font").value<QFont>().weight(), QFont::Bold);
    QCOMPARE(screen.find(u"msg"_s)->property("font").value<QFont>().pixelSize(), 17);
    const QImage drawn = screen.picture();
    for (const QPoint at : {QPoint(3, 3), QPoint(3, 400), QPoint(3, 840)})
        QCOMPARE(drawn.pixelColor(at), QColor(244, 244, 244));
    // The stack is centred below the bar and the title.
    const QRectF title = TestScreen::box(screen.named(u"Mi Perfil"_s));
    const qreal above = box(u"avatar"_s).top() - 24 - title.bottom();
    const qreal below = 844 - box(u"msg"_s).bottom() - 24;
    QVERIFY2(qAbs(above - below) <= 16, qPrintable(u"%1 above, %2 below"_s.arg(above).arg(below)));
}

void PerfilViewTest::savingUntouchedSendsTheStoredName()
{
    server.hold("/api_perfil.php");
    Session::instance().setUserNombre(u"Ana \"Lu\" / Ñ"_s);
    TestScreen screen(perfil());
    press(screen);
    waitForRequests(1);
    QCOMPARE(server.requests().first().method, "POST");
    QCOMPARE(server.requests().first().path, "/api_perfil.php");
    QCOMPARE(server.requests().first().header("Content-Type"), "application/json");
    QCOMPARE(server.requests().first().body,
             R"({"user_id":42,"nombre":"Ana \"Lu\" \/ Ñ","email":"","password":"","avatar_base64":""})");
    QCOMPARE(msg(screen), QString());
    QVERIFY(screen.find(u"guardar"_s)->isEnabled());
}

void PerfilViewTest::savingSendsWhatIsTyped()
{
    TestScreen screen(perfil());
    screen.type(screen.find(u"nombre"_s), QString());
    screen.type(screen.find(u"email"_s), u" no es correo "_s);
    press(screen);
    waitForRequests(1);
    QCOMPARE(server.requests().first().body,
             R"({"user_id":42,"nombre":"","email":" no es correo ","password":"","avatar_base64":""})");
    QCOMPARE(Session::instance().userEmail(), u"ana@x"_s);
}

void PerfilViewTest::nameIsStoredKeystrokeByKeystroke()
{
    QStringList stored;
    const QObject scope;
    Session &session = Session::instance();
    TestScreen screen(perfil());
    connect(&session, &Session::userNombreChanged, &scope, [&] { stored.append(session.userNombre()); });
    screen.type(screen.find(u"nombre"_s), u"Bé "_s);
    QCOMPARE(stored, QStringList({u"B"_s, u"Bé"_s, u"Bé "_s}));
    screen.type(screen.find(u"nombre"_s), QString());
    QCOMPARE(stored.last(), QString());
    QCOMPARE(session.userNombre(), QString());
    QVERIFY(server.requests().isEmpty());
}

void PerfilViewTest::nameFollowsTheSession()
{
    TestScreen screen(perfil());
    screen.type(screen.find(u"nombre"_s), u"Bea"_s);
    Session::instance().setUserNombre(u"Carla"_s);
    QCOMPARE(screen.find(u"nombre"_s)->property("text").toString(), u"Carla"_s);
}

void PerfilViewTest::storedPhotoIsShownAndNotSent()
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

void PerfilViewTest::storedBytesThatAreNoPhotoShowThePlaceholder()
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

void PerfilViewTest::pickedPhotoIsShownAndSentUntouched_data()
{
    QTest::addColumn<QByteArray>("bytes");
    const QByteArray png = picture(Qt::red);
    for (int extra = 0; extra < 3; ++extra)
        QTest::addRow("PNG and %d", extra) << png + QByteArray(extra, '\0');
    QTest::newRow("JPEG") << picture(Qt::red, "jpeg");
    // Large enough for many lines, if there were any.
    QTest::newRow("long") << png + QByteArray(100'000, '\xFF') + "\r\n\r\n";
}

void PerfilViewTest::pickedPhotoIsShownAndSentUntouched()
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

void PerfilViewTest::laterPickReplacesBoth()
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

void PerfilViewTest::sameFileTwiceIsOneChange()
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
    // Photos load in the order of the picks.
    QVERIFY(comesToShow(screen, other));
    QCOMPARE(changes.size(), 2);
    // After another one it is a change again.
    pick(screen, first);
    QVERIFY(comesToShow(screen, later));
}

void PerfilViewTest::whatCannotBeLoadedChangesNothing_data()
{
    QTest::addColumn<QString>("what");
    for (const char *what :
         {"vanished", "empty", "folder", "pipe", "too large", "unreadable", "remote", "no address"})
        QTest::newRow(what) << QString::fromLatin1(what);
}

void PerfilViewTest::whatCannotBeLoadedChangesNothing()
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

    const QByteArray stored = picture(Qt::green);
    Session::instance().setUserAvatarData(stored);
    server.reply("/api_perfil.php", R"({"status":"success"})");
    TestScreen screen(perfil());
    QTRY_VERIFY(decoded(screen));
    QSignalSpy changes(view(screen), SIGNAL(photoChanged()));
    pick(screen, item);
    // What is loaded after it is the first to come.
    const QByteArray next = picture(Qt::red);
    pick(screen, file(u"next.png"_s, next));
    QVERIFY(comesToShow(screen, next));
    QCOMPARE(changes.size(), 1);
    QCOMPARE(msg(screen), QString());
    press(screen);
    QVERIFY(comesToSay(screen, saved));
    QCOMPARE(sentAvatar(), QString::fromLatin1(next.toBase64()));
}

void PerfilViewTest::pickedBytesThatAreNoPhotoAreSentAllTheSame()
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

void PerfilViewTest::savingDuringALoadSendsTheValueOfThatMoment()
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

void PerfilViewTest::largePhotoDoesNotStopTheScreen()
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

void PerfilViewTest::outcomeOfSaving_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<int>("status");
    QTest::addColumn<bool>("success");
    const auto add = [](const char *name, const QByteArray &reply, bool success, int status = 200) {
        QTest::newRow(name) << reply << status << success;
    };
    add("success", R"({"status":"success"})", true);
    add("success with message", R"({"status":"success","message":"Hola"})", true);
    add("HTTP 500 with success", R"({"status":"success"})", true, 500);
    add("no bytes", "", false);
    add("not JSON", "<html>", false);
    add("text before JSON", R"(Warning {"status":"success"})", false);
    add("empty object", "{}", false);
    add("null status", R"({"status":null})", false);
    add("number for message", R"({"status":"success","message":1})", false);
    add("error", R"({"status":"error"})", false);
    add("error with message", R"({"status":"error","message":"Correo en uso"})", false);
    add("no status, message", R"({"message":"Hola"})", false);
    add("other letter case", R"({"status":"Success"})", false);
    add("blank after", R"({"status":"success "})", false);
}

void PerfilViewTest::outcomeOfSaving()
{
    QFETCH(QByteArray, reply);
    QFETCH(int, status);
    QFETCH(bool, success);
    server.reply("/api_perfil.php", reply, status);
    const QByteArray old = picture(Qt::green);
    const QByteArray picked = picture(Qt::red);
    Session::instance().setUserAvatarData(old);
    TestScreen screen(perfil());
    pick(screen, file(u"a.png"_s, picked));
    QVERIFY(comesToShow(screen, picked));
    press(screen);
    QVERIFY(comesToSay(screen, success ? saved : failure));
    QCOMPARE(screen.find(u"msg"_s)->property("color").value<QColor>(), blue);
    QCOMPARE(Session::instance().userAvatarData(), success ? picked : old);
    QCOMPARE(photo(screen), picked);
    QCOMPARE(Session::instance().userNombre(), u"Ana"_s);
    QCOMPARE(Session::instance().userEmail(), u"ana@x"_s);
    QCOMPARE(Session::instance().userId(), 42);
}

void PerfilViewTest::successStoresThePhotoOnShowWhenTheReplyComes()
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

void PerfilViewTest::successWritesTheStoredPhotoBack()
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

void PerfilViewTest::successWithoutAPhotoStoresNone()
{
    server.reply("/api_perfil.php", R"({"status":"success"})");
    TestScreen screen(perfil());
    Session::instance().setUserAvatarData("another");
    press(screen);
    QVERIFY(comesToSay(screen, saved));
    QCOMPARE(Session::instance().userAvatarData(), "another");
}

void PerfilViewTest::lateSuccessStoresThePhoto()
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

void PerfilViewTest::savedPhotoShowsOnTheDashboard()
{
    server.reply("/api_perfil.php", R"({"status":"success"})");
    TestScreen screen("NavigationContainer { root: Component { DashboardView { objectName: 'home' } } }");
    const QQuickItem *const home = screen.find(u"home"_s);
    screen.tap(screen.named(u"Perfil"_s));
    QTRY_VERIFY(settledAt(screen, 2));
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

void PerfilViewTest::leavingDiscardsAllButTheName()
{
    const QByteArray stored = picture(Qt::green);
    Session::instance().setUserAvatarData(stored);
    server.reply("/api_perfil.php", R"({"status":"error"})");
    TestScreen screen(opened());
    open(screen);
    screen.type(screen.find(u"nombre"_s), QString());
    screen.type(screen.find(u"email"_s), u"otra@x"_s);
    const QByteArray picked = picture(Qt::red);
    const QUrl item = file(u"a.png"_s, picked);
    pick(screen, item);
    QVERIFY(comesToShow(screen, picked));
    press(screen);
    QVERIFY(comesToSay(screen, failure));
    leave(screen);
    QCOMPARE(Session::instance().userNombre(), QString());
    QTRY_VERIFY(screen.all(u"guardar"_s).isEmpty());
    open(screen);
    QCOMPARE(screen.find(u"email"_s)->property("text").toString(), QString());
    QCOMPARE(msg(screen), QString());
    QCOMPARE(photo(screen), stored);
    press(screen);
    waitForRequests(2);
    QCOMPARE(server.requests().last().body,
             R"({"user_id":42,"nombre":"","email":"","password":"","avatar_base64":""})");
    // The file of the last visit is a new pick.
    pick(screen, item);
    QVERIFY(comesToShow(screen, picked));
}

void PerfilViewTest::messageStaysUntilTheNextOne()
{
    server.reply("/api_perfil.php", R"({"status":"success"})");
    TestScreen screen(perfil());
    press(screen);
    QVERIFY(comesToSay(screen, saved));
    server.hold("/api_perfil.php");
    press(screen);
    waitForRequests(2);
    QCOMPARE(msg(screen), saved);
    server.held.first()->close();
    QVERIFY(comesToSay(screen, failure));
}

void PerfilViewTest::everyPressSendsOneMoreRequest()
{
    server.hold("/api_perfil.php");
    TestScreen screen(perfil());
    press(screen);
    press(screen);
    press(screen);
    waitForRequests(3);
    server.held[2]->send(R"({"status":"success"})");
    QVERIFY(comesToSay(screen, saved));
    server.held[0]->send(R"({"status":"error"})");
    QVERIFY(comesToSay(screen, failure));
}

void PerfilViewTest::unfinishedTextIsSent()
{
    TestScreen screen(perfil());
    for (const QString &name : {u"nombre"_s, u"email"_s}) {
        QQuickItem *const field = screen.find(name);
        screen.type(field, u"a"_s);
        QInputMethodEvent unfinished(u"ñ"_s, {});
        QCoreApplication::sendEvent(field, &unfinished);
        pressAtOnce(screen);
    }
    waitForRequests(2);
    QCOMPARE(sent("/api_perfil.php").last().value("nombre"_L1).toString(), u"añ"_s);
    QCOMPARE(sent("/api_perfil.php").last().value("email"_L1).toString(), u"añ"_s);
    QCOMPARE(Session::instance().userNombre(), u"añ"_s);
}

void PerfilViewTest::returnInAFieldSendsNothing()
{
    TestScreen screen(perfil());
    for (const QString &name : {u"nombre"_s, u"email"_s}) {
        screen.find(name)->forceActiveFocus();
        screen.key(Qt::Key_Return);
        screen.key(Qt::Key_Enter);
        QVERIFY(screen.find(name)->hasActiveFocus());
    }
    screen.type(screen.find(u"email"_s), u"primero"_s);
    press(screen);
    waitForRequests(1);
    QCOMPARE(sent("/api_perfil.php").first().value("email"_L1).toString(), u"primero"_s);
}

void PerfilViewTest::messageIsAnnounced()
{
    TestScreen screen(perfil());
    press(screen);
    QTRY_VERIFY(screen.named(failure));
    QQuickItem *const line = screen.named(failure);
    QCOMPARE(line, screen.find(u"msg"_s));
    QCOMPARE(QAccessible::queryAccessibleInterface(line)->role(), QAccessible::AlertMessage);
}

void PerfilViewTest::everythingIsReadInOrder()
{
    TestScreen screen(perfil());
    const QStringList order{u"Mi Perfil"_s,       u"Cambiar foto"_s, u"Toca la imagen para cambiar foto"_s,
                            u"Nombre Completo"_s, u"Correo"_s,       u"Guardar Cambios"_s};
    QCOMPARE(screen.names(), order);
    QCOMPARE(QAccessible::queryAccessibleInterface(screen.named(u"Cambiar foto"_s))->role(), QAccessible::Button);
    QStringList walked;
    for (int i = 0; i < 4; ++i) {
        screen.key(Qt::Key_Tab);
        walked.append(
            QAccessible::queryAccessibleInterface(screen.window().activeFocusItem())->text(QAccessible::Name));
    }
    QCOMPARE(walked, QStringList({order[1], order[3], order[4], order[5]}));
}

void PerfilViewTest::nothingIsCut_data()
{
    QTest::addColumn<QSize>("size");
    QTest::newRow("narrow") << QSize(320, 480);
    QTest::newRow("phone") << QSize(390, 844);
    QTest::newRow("wide") << QSize(1280, 800);
}

void PerfilViewTest::nothingIsCut()
{
    QFETCH(QSize, size);
    TestScreen screen(perfil(), size);
    press(screen);
    QVERIFY(comesToSay(screen, failure));
    for (const QString &name : {u"avatar"_s, u"nombre"_s, u"email"_s, u"guardar"_s, u"msg"_s}) {
        const QRectF box = TestScreen::box(screen.find(name));
        QVERIFY2(box.left() >= 0 && box.right() <= size.width(), qUtf8Printable(name));
        QVERIFY2(box.width() <= 600 - 48, qUtf8Printable(name));
    }
    screen.scrollTo(screen.find(u"msg"_s));
    QVERIFY(TestScreen::box(screen.find(u"msg"_s)).bottom() <= size.height());
}

MAROVENDA_TEST_MAIN(PerfilViewTest)
#include "tst_PerfilView.moc"
