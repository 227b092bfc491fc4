#include "MarovendaTest.h"
#include "PhotoDecoder.h"
#include "PictureFolder.h"
#include "StalledFile.h"
#include "TestScreen.h"

#include <QAccessible>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QQmlComponent>
#include <QTemporaryDir>
#include <QTest>

#include <semaphore>
#include <sys/stat.h>

using namespace Qt::StringLiterals;

class PhotoPickerTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();

    void newestComesFirstAndOnlyPicturesAreListed();
    void folderIsTheOneThatTheDesktopNames();
    void noMoreThanTheNewestAreListed();
    void missingFolderSaysThatThereIsNone();
    void everyOpeningReadsTheFolderAnew();
    void photosAreDrawn();
    void tapPicks();
    void screenReaderPicks();
    void keysPick_data();
    void keysPick();
    void arrowsMoveAmongThePhotos();
    void keysInAnEmptyFolderDoNothing();
    void cancelPicksNothing_data();
    void cancelPicksNothing();
    void escapeLeavesThePickerBeforeTheScreen();
    void focusCannotLeave();
    void whatIsBelowCannotBeReachedOrHeard();
    void nothingBelowCanBeReachedUntilItHasGone();
    void heldKeyThatOpenedItPicksNothing_data();
    void heldKeyThatOpenedItPicksNothing();
    void focusComesBackToWhatOpenedIt();
    void profileTakesThePickedPhoto();
    void brokenPicturesHurtNothing();
    void stalledPictureHoldsUpNoOther();
    void lostWalkHoldsUpNoLaterOne();
    void fitsEveryWindow_data();
    void fitsEveryWindow();
    void dialogOffersWhatCanBeDecoded();

private:
    static QByteArray page()
    {
        return R"qml(AppScreen {
            id: page
            property int picks: 0
            property int presses: 0
            property url chosen
            title: "Debajo"
            covered: picker.covering
            PrimaryButton { objectName: "below"; width: page.width; height: 700; text: "Tapado"; onClicked: ++page.presses }
            PhotoPicker {
                id: picker
                objectName: "picker"
                parent: page
                onPicked: file => { ++page.picks; page.chosen = file }
            }
        })qml";
    }
    static bool shown(TestScreen &screen) { return screen.find(u"picker"_s)->isVisible(); }
    static int count(TestScreen &screen) { return screen.find(u"photos"_s)->property("count").toInt(); }
    static void open(TestScreen &screen, int photos)
    {
        QVERIFY(QMetaObject::invokeMethod(screen.find(u"picker"_s), "open"));
        QVERIFY(shown(screen));
        QTRY_COMPARE(count(screen), photos);
        screen.settle();
    }
    static void press(QQuickItem *item)
    {
        QAccessible::queryAccessibleInterface(item)->actionInterface()->doAction(
            QAccessibleActionInterface::pressAction());
    }
    static QString focused(TestScreen &screen)
    {
        QQuickItem *const item = screen.window().activeFocusItem();
        QAccessibleInterface *const heard = QAccessible::queryAccessibleInterface(item);
        return heard ? heard->text(QAccessible::Name) + item->objectName() : QString();
    }
    QString path(const QString &name) const { return m_home->filePath(u"Pictures/"_s + name); }
    QUrl url(const QString &name) const { return QUrl::fromLocalFile(path(name)); }
    /// A picture of one colour, some minutes old.
    void add(const QString &name, int minutes, const QColor &color = Qt::red) const
    {
        QImage image(30, 20, QImage::Format_RGB32);
        image.fill(color);
        if (!image.save(path(name), "png"))
            qFatal("cannot write %s", qUtf8Printable(name));
        age(name, minutes);
    }
    void addBytes(const QString &name, int minutes, const QByteArray &bytes) const
    {
        QFile file(path(name));
        if (!file.open(QFile::WriteOnly) || file.write(bytes) != bytes.size())
            qFatal("cannot write %s", qUtf8Printable(name));
        file.close();
        age(name, minutes);
    }
    void age(const QString &name, int minutes) const
    {
        QFile file(path(name));
        if (!file.open(QFile::ReadWrite) ||
            !file.setFileTime(m_now.addSecs(-60 * minutes), QFile::FileModificationTime))
            qFatal("cannot age %s", qUtf8Printable(name));
    }

    std::unique_ptr<QTemporaryDir> m_home;
    const QDateTime m_now = QDateTime::currentDateTime();
};

static const QString nothingThere = u"No hay fotos en la carpeta de imágenes."_s;

void PhotoPickerTest::init()
{
    m_home = std::make_unique<QTemporaryDir>();
    qputenv("HOME", m_home->path().toLocal8Bit());
    QVERIFY(QDir(m_home->path()).mkpath(u"Pictures/sub/deeper"_s));
}

void PhotoPickerTest::newestComesFirstAndOnlyPicturesAreListed()
{
    add(u"viejo.png"_s, 50);
    add(u"sub/tercero.webp"_s, 30);
    add(u"segundo.JPG"_s, 20);
    add(u"sub/deeper/primero ñ.v2.jpeg"_s, 10);
    add(u"cuarto.gif"_s, 40);
    add(u"quinto.bmp"_s, 45);
    add(u".oculto.png"_s, 1);
    add(u"notas.txt"_s, 1);
    add(u"foto.png.part"_s, 1);
    add(u"png"_s, 1);
    addBytes(u"dibujo.svg"_s, 1, "<svg/>");
    QVERIFY(QDir(path({})).mkdir(u"carpeta.png"_s));
    QCOMPARE(mkfifo(path(u"tubo.png"_s).toLocal8Bit().constData(), 0600), 0);
    QVERIFY(QFile::link(path({}), path(u"sub/vuelta"_s)));
    TestScreen screen(page());
    open(screen, 6);
    const QStringList heard{u"Elegir foto"_s, u"Cancelar"_s, u"Elegir foto"_s, u"primero ñ.v2"_s, u"segundo"_s,
                            u"tercero"_s,     u"cuarto"_s,   u"quinto"_s,      u"viejo"_s};
    QCOMPARE(screen.names(), heard);
    QCOMPARE(QAccessible::queryAccessibleInterface(screen.named(u"Elegir foto"_s))->role(), QAccessible::Dialog);
    QCOMPARE(QAccessible::queryAccessibleInterface(screen.named(u"segundo"_s))->role(), QAccessible::Button);
    QVERIFY(!screen.texts().contains(nothingThere));
    // In rows of three.
    const auto at = [&](const QString &name) { return TestScreen::box(screen.named(name)).topLeft(); };
    QCOMPARE(at(u"primero ñ.v2"_s), QPointF(0, 44));
    QCOMPARE(at(u"segundo"_s), QPointF(130, 44));
    QCOMPARE(at(u"tercero"_s), QPointF(260, 44));
    QCOMPARE(at(u"cuarto"_s), QPointF(0, 174));
}

void PhotoPickerTest::folderIsTheOneThatTheDesktopNames()
{
    add(u"ajena.png"_s, 1);
    QVERIFY(QDir(m_home->path()).mkdir(u"Imágenes"_s));
    QVERIFY(QFile::copy(path(u"ajena.png"_s), m_home->filePath(u"Imágenes/propia.png"_s)));
    QFile places(qEnvironmentVariable("XDG_CONFIG_HOME") + u"/user-dirs.dirs"_s);
    QVERIFY(places.open(QFile::WriteOnly));
    places.write("XDG_PICTURES_DIR=\"$HOME/Imágenes\"\n");
    places.close();
    TestScreen screen(page());
    open(screen, 1);
    QVERIFY(places.remove());
    QVERIFY(screen.named(u"propia"_s));
}

void PhotoPickerTest::noMoreThanTheNewestAreListed()
{
    const int more = 4 * PictureFolder::most + 50;
    for (int i = 0; i < more; ++i) {
        QFile file(path(u"%1.png"_s.arg(i)));
        QVERIFY(file.open(QFile::WriteOnly));
    }
    age(u"17.png"_s, 60);
    age(u"4321.png"_s, -60);
    PictureFolder folder;
    QVERIFY(!folder.ready());
    folder.refresh();
    QVERIFY(!folder.ready());
    QTRY_VERIFY(folder.ready());
    QCOMPARE(folder.count(), PictureFolder::most);
    const auto name = [&](int row) {
        const PictureList &list = *folder.pictures();
        return list.data(list.index(row), list.roleNames().key("name")).toString();
    };
    QCOMPARE(name(0), u"4321"_s);
    for (int row = 0; row < folder.count(); ++row)
        QVERIFY(name(row) != u"17"_s);
}

void PhotoPickerTest::missingFolderSaysThatThereIsNone()
{
    QVERIFY(QDir(path({})).removeRecursively());
    TestScreen screen(page());
    QVERIFY(QMetaObject::invokeMethod(screen.find(u"picker"_s), "open"));
    // Not before it is known.
    QVERIFY(!screen.texts(screen.find(u"picker"_s)).contains(nothingThere));
    QTRY_VERIFY(screen.named(nothingThere));
    QCOMPARE(screen.names(), QStringList({u"Elegir foto"_s, u"Cancelar"_s, u"Elegir foto"_s, nothingThere}));
}

void PhotoPickerTest::everyOpeningReadsTheFolderAnew()
{
    add(u"uno.png"_s, 10);
    TestScreen screen(page());
    open(screen, 1);
    screen.key(Qt::Key_Escape);
    add(u"dos.png"_s, 5);
    add(u"tres.png"_s, 20);
    open(screen, 3);
    QCOMPARE(screen.names().sliced(3), QStringList({u"dos"_s, u"uno"_s, u"tres"_s}));
    screen.key(Qt::Key_Right);
    screen.key(Qt::Key_Escape);
    for (const char *name : {"uno.png", "tres.png"})
        QVERIFY(QFile::remove(path(QString::fromLatin1(name))));
    // It starts at the newest again.
    open(screen, 1);
    screen.key(Qt::Key_Return);
    QCOMPARE(screen.root()->property("chosen").toUrl(), url(u"dos.png"_s));
}

void PhotoPickerTest::photosAreDrawn()
{
    add(u"rojo.png"_s, 1, Qt::red);
    add(u"verde.png"_s, 2, Qt::green);
    TestScreen screen(page());
    open(screen, 2);
    const auto middle = [&](const QString &name) {
        return screen.picture().pixelColor(TestScreen::box(screen.named(name)).center().toPoint());
    };
    QTRY_COMPARE(middle(u"rojo"_s), QColor(Qt::red));
    QTRY_COMPARE(middle(u"verde"_s), QColor(Qt::green));
}

void PhotoPickerTest::tapPicks()
{
    add(u"uno.png"_s, 10);
    add(u"sub/dos ñ #%20.png"_s, 20);
    TestScreen screen(page());
    open(screen, 2);
    screen.tap(screen.named(u"dos ñ #%20"_s));
    QCOMPARE(screen.root()->property("picks").toInt(), 1);
    QCOMPARE(screen.root()->property("chosen").toUrl(), url(u"sub/dos ñ #%20.png"_s));
    QTRY_VERIFY(!shown(screen));
    QVERIFY(screen.named(u"Tapado"_s));
}

void PhotoPickerTest::screenReaderPicks()
{
    add(u"uno.png"_s, 10);
    add(u"dos.png"_s, 20);
    TestScreen screen(page());
    open(screen, 2);
    press(screen.named(u"dos"_s));
    QCOMPARE(screen.root()->property("chosen").toUrl(), url(u"dos.png"_s));
    QTRY_VERIFY(!shown(screen));
    open(screen, 2);
    press(screen.named(u"Cancelar"_s));
    QTRY_VERIFY(!shown(screen));
    QCOMPARE(screen.root()->property("picks").toInt(), 1);
}

void PhotoPickerTest::keysPick_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::newRow("Return") << Qt::Key_Return;
    QTest::newRow("Enter") << Qt::Key_Enter;
    QTest::newRow("Space") << Qt::Key_Space;
}

void PhotoPickerTest::keysPick()
{
    QFETCH(Qt::Key, key);
    for (int i = 0; i < 4; ++i)
        add(u"%1.png"_s.arg(i), i);
    TestScreen screen(page());
    open(screen, 4);
    screen.key(key);
    QCOMPARE(screen.root()->property("chosen").toUrl(), url(u"0.png"_s));
    QTRY_VERIFY(!shown(screen));
    open(screen, 4);
    screen.key(Qt::Key_Right);
    screen.key(Qt::Key_Right);
    screen.key(key);
    QCOMPARE(screen.root()->property("chosen").toUrl(), url(u"2.png"_s));
    QCOMPARE(screen.root()->property("picks").toInt(), 2);
}

void PhotoPickerTest::arrowsMoveAmongThePhotos()
{
    for (int i = 0; i < 30; ++i)
        add(u"%1.png"_s.arg(i), i);
    TestScreen screen(page());
    open(screen, 30);
    QQuickItem *const grid = screen.find(u"photos"_s);
    const auto current = [&] { return grid->property("currentIndex").toInt(); };
    // The current one is told from the start, and marked once the keyboard is used.
    const auto isFocused = [&](const QString &name) {
        return bool(QAccessible::queryAccessibleInterface(screen.named(name))->state().focused);
    };
    QVERIFY(isFocused(u"0"_s));
    QVERIFY(!isFocused(u"1"_s));
    const QRectF cell = TestScreen::box(screen.named(u"0"_s));
    const auto edge = [&] {
        return screen.picture().pixelColor(QPointF(cell.center().x(), cell.top() + 3).toPoint());
    };
    QVERIFY(edge() != QColor(0x00, 0x7A, 0xFF));
    screen.key(Qt::Key_Left);
    QCOMPARE(edge(), QColor(0x00, 0x7A, 0xFF));
    screen.key(Qt::Key_Up);
    QCOMPARE(current(), 0);
    screen.key(Qt::Key_Right);
    QVERIFY(isFocused(u"1"_s));
    screen.key(Qt::Key_Down);
    QCOMPARE(current(), 4);
    for (int i = 0; i < 8; ++i)
        screen.key(Qt::Key_Down);
    QCOMPARE(current(), 28);
    // It comes into view.
    QTRY_VERIFY(TestScreen::box(screen.named(u"28"_s)).bottom() <= 844 + 0.5);
    screen.key(Qt::Key_Return);
    QCOMPARE(screen.root()->property("chosen").toUrl(), url(u"28.png"_s));
}

void PhotoPickerTest::keysInAnEmptyFolderDoNothing()
{
    TestScreen screen(page());
    open(screen, 0);
    QTRY_VERIFY(screen.named(nothingThere));
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Space, Qt::Key_Right, Qt::Key_Return})
        screen.key(key);
    QVERIFY(shown(screen));
    QCOMPARE(screen.root()->property("picks").toInt(), 0);
    screen.key(Qt::Key_Escape);
    QTRY_VERIFY(!shown(screen));
}

void PhotoPickerTest::cancelPicksNothing_data()
{
    QTest::addColumn<QString>("way");
    for (const char *way : {"tap", "Return", "Escape", "Back"})
        QTest::newRow(way) << QString::fromLatin1(way);
}

void PhotoPickerTest::cancelPicksNothing()
{
    QFETCH(QString, way);
    add(u"uno.png"_s, 10);
    TestScreen screen(page());
    screen.find(u"below"_s)->forceActiveFocus();
    open(screen, 1);
    if (way == u"tap"_s) {
        screen.tap(screen.named(u"Cancelar"_s));
    } else if (way == u"Return"_s) {
        screen.key(Qt::Key_Tab);
        screen.key(Qt::Key_Return);
    } else {
        screen.key(way == u"Escape"_s ? Qt::Key_Escape : Qt::Key_Back);
    }
    QTRY_VERIFY(!shown(screen));
    QCOMPARE(screen.root()->property("picks").toInt(), 0);
    QVERIFY(screen.named(u"Tapado"_s));
    QVERIFY(!screen.named(u"Cancelar"_s) && !screen.named(u"Elegir foto"_s) && !screen.named(u"uno"_s));
    // The keys are the screen's again.
    QVERIFY(screen.root()->property("activeFocus").toBool());
}

void PhotoPickerTest::escapeLeavesThePickerBeforeTheScreen()
{
    TestScreen screen(TestScreen::pushing("PerfilView {}"));
    screen.tap(screen.find(u"open"_s));
    QTRY_VERIFY(screen.settledAt(2));
    screen.tap(screen.find(u"cambiarFoto"_s));
    QVERIFY(shown(screen));
    screen.key(Qt::Key_Escape);
    QTRY_VERIFY(!shown(screen));
    QCOMPARE(screen.root()->property("depth").toInt(), 2);
    screen.key(Qt::Key_Escape);
    QTRY_VERIFY(screen.settledAt(1));
}

void PhotoPickerTest::focusCannotLeave()
{
    add(u"uno.png"_s, 10);
    TestScreen screen(page());
    open(screen, 1);
    QStringList visited{focused(screen)};
    for (int i = 0; i < 4; ++i) {
        screen.key(Qt::Key_Tab);
        visited.append(focused(screen));
    }
    screen.key(Qt::Key_Backtab, Qt::ShiftModifier);
    visited.append(focused(screen));
    const QString photo = u"uno"_s;
    const QString cancel = u"Cancelarcancelar"_s;
    QCOMPARE(visited, QStringList({photo, cancel, photo, cancel, photo, cancel}));
}

void PhotoPickerTest::whatIsBelowCannotBeReachedOrHeard()
{
    TestScreen screen(page());
    QVERIFY(screen.named(u"Tapado"_s));
    open(screen, 0);
    QVERIFY(!screen.named(u"Tapado"_s));
    screen.tap(screen.find(u"below"_s));
    QCOMPARE(screen.root()->property("presses").toInt(), 0);
    screen.key(Qt::Key_Escape);
    QTRY_VERIFY(!shown(screen));
    screen.tap(screen.find(u"below"_s));
    QCOMPARE(screen.root()->property("presses").toInt(), 1);
}

void PhotoPickerTest::nothingBelowCanBeReachedUntilItHasGone()
{
    add(u"uno.png"_s, 10);
    TestScreen screen(page());
    open(screen, 1);
    const QPoint photo = TestScreen::box(screen.named(u"uno"_s)).center().toPoint();
    for (int i = 0; i < 3; ++i)
        QTest::mouseClick(&screen.window(), Qt::LeftButton, {}, photo);
    screen.key(Qt::Key_Space);
    QVERIFY(shown(screen));
    QCOMPARE(screen.root()->property("picks").toInt(), 1);
    QCOMPARE(screen.root()->property("presses").toInt(), 0);
    QVERIFY(!screen.named(u"Tapado"_s) && !screen.named(u"uno"_s));
    QTRY_VERIFY(!shown(screen));
}

void PhotoPickerTest::heldKeyThatOpenedItPicksNothing_data() { keysPick_data(); }

void PhotoPickerTest::heldKeyThatOpenedItPicksNothing()
{
    QFETCH(Qt::Key, key);
    add(u"uno.png"_s, 10);
    TestScreen screen(page());
    screen.hold(key, true, [&] { open(screen, 1); });
    QCOMPARE(screen.root()->property("picks").toInt(), 0);
    QVERIFY(screen.named(u"uno"_s));
    // The key that picks is still down when the picker has gone: it does not open it again.
    screen.key(Qt::Key_Escape);
    QTRY_VERIFY(!shown(screen));
    screen.find(u"below"_s)->forceActiveFocus(Qt::TabFocusReason);
    open(screen, 1);
    screen.hold(key, true, [&] { QTRY_VERIFY(!shown(screen)); });
    QCOMPARE(screen.root()->property("picks").toInt(), 1);
    QCOMPARE(screen.root()->property("presses").toInt(), 0);
}

void PhotoPickerTest::focusComesBackToWhatOpenedIt()
{
    TestScreen screen(TestScreen::pushing("PerfilView {}"));
    screen.tap(screen.find(u"open"_s));
    QTRY_VERIFY(screen.settledAt(2));
    QQuickItem *const photo = screen.named(u"Cambiar foto"_s);
    photo->forceActiveFocus(Qt::TabFocusReason);
    screen.key(Qt::Key_Return);
    QVERIFY(shown(screen));
    screen.key(Qt::Key_Escape);
    QTRY_VERIFY(photo->property("visualFocus").toBool());
    // By tap it stays with the field that had it.
    QQuickItem *const name = screen.find(u"nombre"_s);
    screen.type(name, u"Ana"_s);
    screen.tap(photo);
    QVERIFY(shown(screen));
    screen.key(Qt::Key_Escape);
    QTRY_VERIFY(name->hasActiveFocus());
}

void PhotoPickerTest::profileTakesThePickedPhoto()
{
    add(u"uno.png"_s, 10);
    TestScreen screen(TestScreen::pushing("PerfilView {}"));
    screen.tap(screen.find(u"open"_s));
    QTRY_VERIFY(screen.settledAt(2));
    press(screen.named(u"Cambiar foto"_s));
    QTRY_COMPARE(count(screen), 1);
    screen.settle();
    QCOMPARE(screen.names(), QStringList({u"Elegir foto"_s, u"Cancelar"_s, u"Elegir foto"_s, u"uno"_s}));
    // All of the screen, its bar too.
    QCOMPARE(TestScreen::box(screen.find(u"picker"_s)), QRectF(0, 0, 390, 844));
    screen.tap(screen.named(u"uno"_s));
    QTRY_VERIFY(!shown(screen));
    QTRY_VERIFY(screen.find(u"avatar"_s)->property("decoded").toBool());
    QFile file(path(u"uno.png"_s));
    QVERIFY(file.open(QFile::ReadOnly));
    QCOMPARE(screen.find(u"avatar"_s)->property("photo").toByteArray(), file.readAll());
    for (const QString &name : {u"Mi Perfil"_s, u"Atrás"_s, u"Cambiar foto"_s, u"Guardar Cambios"_s})
        QVERIFY2(screen.named(name), qUtf8Printable(name));
}

void PhotoPickerTest::brokenPicturesHurtNothing()
{
    add(u"bien.png"_s, 40, Qt::green);
    QFile good(path(u"bien.png"_s));
    QVERIFY(good.open(QFile::ReadOnly));
    addBytes(u"texto.png"_s, 1, "no photo");
    addBytes(u"vacia.jpg"_s, 2, {});
    addBytes(u"cortada.png"_s, 3, good.read(good.size() / 2));
    addBytes(u"borrada.webp"_s, 4, "RIFF\xFF\xFF\xFF\xFFWEBPVP8 ");
    TestScreen screen(page());
    open(screen, 5);
    QVERIFY(QFile::remove(path(u"borrada.webp"_s)));
    const auto middle = [&](const QString &name) {
        return screen.picture().pixelColor(TestScreen::box(screen.named(name)).center().toPoint());
    };
    // They are decoded one after the other.
    QTRY_COMPARE(middle(u"bien"_s), QColor(Qt::green));
    QCOMPARE(middle(u"texto"_s), middle(u"vacia"_s));
    screen.tap(screen.named(u"texto"_s));
    QCOMPARE(screen.root()->property("chosen").toUrl(), url(u"texto.png"_s));
}

void PhotoPickerTest::stalledPictureHoldsUpNoOther()
{
    add(u"lejos.png"_s, 1);
    add(u"cerca.png"_s, 2, Qt::green);
    const StalledFile stalled(path(u"lejos.png"_s));
    TestScreen screen(TestScreen::pushing("PerfilView {}"));
    screen.tap(screen.find(u"open"_s));
    QTRY_VERIFY(screen.settledAt(2));
    press(screen.named(u"Cambiar foto"_s));
    QTRY_COMPARE(count(screen), 2);
    screen.settle();
    const auto middle = [&](const QString &name) {
        return screen.picture().pixelColor(TestScreen::box(screen.named(name)).center().toPoint());
    };
    QTRY_VERIFY(stalled.isWaitedFor());
    QTRY_COMPARE(middle(u"cerca"_s), QColor(Qt::green));
    // Nor does it hold up the photo that is on show already.
    screen.tap(screen.named(u"cerca"_s));
    QTRY_VERIFY(screen.find(u"avatar"_s)->property("decoded").toBool());
}

void PhotoPickerTest::lostWalkHoldsUpNoLaterOne()
{
    struct Lost {
        std::binary_semaphore found{0};
        std::binary_semaphore ended{0};
    };
    const auto lost = std::make_shared<Lost>();
    PictureFolder folder;
    folder.refreshWith([lost](const QString &path) {
        lost->found.acquire();
        lost->ended.release();
        return QStringList(path + u"/old.png"_s);
    });
    PictureFolder marker;
    marker.refreshWith([](const QString &) { return QStringList(); });
    QTRY_VERIFY(marker.ready());
    QVERIFY(!folder.ready());
    folder.refreshWith([](const QString &path) { return QStringList({path + u"/a.png"_s, path + u"/b.png"_s}); });
    QTRY_VERIFY(folder.ready());
    QCOMPARE(folder.count(), 2);
    // Found after all, it does not replace what was found since.
    lost->found.release();
    lost->ended.acquire();
    marker.refreshWith([](const QString &) { return QStringList(); });
    QTRY_VERIFY(marker.ready());
    QVERIFY(folder.ready());
    QCOMPARE(folder.count(), 2);
}

void PhotoPickerTest::fitsEveryWindow_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<int>("columns");
    QTest::newRow("narrow") << QSize(320, 480) << 3;
    QTest::newRow("phone") << QSize(390, 844) << 3;
    QTest::newRow("wide") << QSize(1280, 800) << 7;
}

void PhotoPickerTest::fitsEveryWindow()
{
    QFETCH(QSize, size);
    QFETCH(int, columns);
    for (int i = 0; i < 60; ++i)
        add(u"%1.png"_s.arg(i), i);
    TestScreen screen(page(), size);
    open(screen, 60);
    const QRectF window({0, 0}, QSizeF(size));
    const QRectF cancel = TestScreen::box(screen.named(u"Cancelar"_s));
    QVERIFY(window.contains(cancel));
    const QQuickItem *const last = screen.named(QString::number(columns - 1));
    QVERIFY(window.contains(TestScreen::box(last)));
    QCOMPARE(TestScreen::box(last).top(), TestScreen::box(screen.named(u"0"_s)).top());
    QVERIFY(TestScreen::box(screen.named(QString::number(columns))).top() > TestScreen::box(last).top());
    QVERIFY(last->width() >= 44 && last->height() >= 44);
    QCOMPARE(last->width(), last->height());
    QCOMPARE(TestScreen::box(screen.named(u"0"_s)).top(), 44);
    // The heading stands beside the button, uncut.
    for (const QQuickItem *text : screen.find(u"picker"_s)->childItems().at(1)->childItems()) {
        if (text->property("text").toString() != u"Elegir foto"_s)
            continue;
        QVERIFY(TestScreen::box(text).left() > cancel.right());
        QVERIFY(!text->property("truncated").toBool());
    }
    // The last one can be reached by key, then by finger.
    QQuickItem *const grid = screen.find(u"photos"_s);
    for (int i = 0; i < 59; ++i)
        screen.key(Qt::Key_Right);
    QTRY_VERIFY(window.contains(TestScreen::box(screen.named(u"59"_s))));
    QTRY_VERIFY(!grid->property("moving").toBool());
    screen.tap(screen.named(u"59"_s));
    QCOMPARE(screen.root()->property("chosen").toUrl(), url(u"59.png"_s));
}

void PhotoPickerTest::dialogOffersWhatCanBeDecoded()
{
    // There is no platform's dialog here: what is asked of it is.
    QVERIFY(QDir(path({})).mkpath(u"QtQuick/Dialogs"_s));
    addBytes(u"QtQuick/Dialogs/qmldir"_s, 0, "module QtQuick.Dialogs\nFileDialog 6.0 FileDialog.qml\n");
    addBytes(u"QtQuick/Dialogs/FileDialog.qml"_s, 0, R"qml(import QtQuick
        QtObject {
            enum FileMode { OpenFile }
            signal accepted
            objectName: "dialog"
            property string title
            property int fileMode
            property var nameFilters
            property url currentFolder
            property url selectedFile
            function open() {}
        })qml");
    TestScreen screen("Item {}");
    screen.engine().addImportPath(path({}));
    QQmlComponent component(&screen.engine());
    // As it is written: compiled, it knows the real dialog's type.
    QFile layout(u":/Marovenda/Ui/PlatformPhotoPicker.qml"_s);
    QVERIFY(layout.open(QFile::ReadOnly));
    component.setData(layout.readAll(), QUrl(u"qrc:/test/Page.qml"_s));
    const std::unique_ptr<QObject> picker(component.create());
    QVERIFY2(picker, qPrintable(component.errorString()));
    const auto *const dialog = picker->findChild<QObject *>(u"dialog"_s);
    QVERIFY(dialog);
    QStringList patterns;
    for (const QString &ending : photoEndings())
        patterns << u"*."_s + ending << u"*."_s + ending.toUpper();
    QCOMPARE(dialog->property("nameFilters").toStringList(),
             QStringList(u"Imágenes (%1)"_s.arg(patterns.join(u' '))));
}

MAROVENDA_TEST_MAIN(PhotoPickerTest)
#include "tst_PhotoPicker.moc"
