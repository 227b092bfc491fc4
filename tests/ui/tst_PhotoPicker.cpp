#include "MarovendaTest.h"
#include "TestScreen.h"

#include <QAccessible>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QQmlComponent>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

class PhotoPickerTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();

    void missingFolderHasNothingToPick();
    void everyOpeningReadsTheFolderAndStartsAtItsNewest();
    void tapAndScreenReaderPick();
    void keyPicksUnlessItIsHeldFromBefore_data();
    void keyPicksUnlessItIsHeldFromBefore();
    void arrowsMoveAmongThePhotos();
    void cancelPicksNothing();
    void profileIsCoveredUntilEscapeClosesThePicker();
    void focusCannotLeave();
    void nothingBelowCanBeUsedWhileItFades();
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
    QString path(const QString &name) const { return m_home->filePath(u"Pictures/"_s + name); }
    QUrl url(const QString &name) const { return QUrl::fromLocalFile(path(name)); }
    /// A picture some minutes old.
    void add(const QString &name, int minutes) const
    {
        QImage image(30, 20, QImage::Format_RGB32);
        image.fill(Qt::red);
        QFile file(path(name));
        if (!file.open(QFile::ReadWrite) || !image.save(&file, "png") || !file.flush() ||
            !file.setFileTime(m_now.addSecs(-60 * minutes), QFile::FileModificationTime))
            qFatal("cannot write %s", qUtf8Printable(name));
    }
    void addText(const QString &name, const QByteArray &text) const
    {
        QFile file(path(name));
        if (!file.open(QFile::WriteOnly) || file.write(text) != text.size())
            qFatal("cannot write %s", qUtf8Printable(name));
    }

    std::unique_ptr<QTemporaryDir> m_home;
    const QDateTime m_now = QDateTime::currentDateTime();
};

static const QString nothingThere = u"No hay fotos en la carpeta de imágenes."_s;

void PhotoPickerTest::init()
{
    m_home = std::make_unique<QTemporaryDir>();
    qputenv("HOME", m_home->path().toLocal8Bit());
    QVERIFY(QDir(m_home->path()).mkpath(u"Pictures/sub"_s));
}

void PhotoPickerTest::missingFolderHasNothingToPick()
{
    QVERIFY(QDir(path({})).removeRecursively());
    TestScreen screen(page());
    QVERIFY(QMetaObject::invokeMethod(screen.find(u"picker"_s), "open"));
    // Not before it is known.
    QVERIFY(!screen.texts(screen.find(u"picker"_s)).contains(nothingThere));
    QTRY_VERIFY(screen.named(nothingThere));
    QCOMPARE(screen.names(), QStringList({u"Elegir foto"_s, u"Cancelar"_s, u"Elegir foto"_s, nothingThere}));
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Space, Qt::Key_Right, Qt::Key_Return})
        screen.key(key);
    QVERIFY(shown(screen));
    QCOMPARE(screen.root()->property("picks").toInt(), 0);
    screen.key(Qt::Key_Escape);
    QTRY_VERIFY(!shown(screen));
}

void PhotoPickerTest::everyOpeningReadsTheFolderAndStartsAtItsNewest()
{
    add(u"uno.png"_s, 10);
    add(u"dos.png"_s, 5);
    TestScreen screen(page());
    open(screen, 2);
    QCOMPARE(screen.names(), QStringList({u"Elegir foto"_s, u"Cancelar"_s, u"Elegir foto"_s, u"dos"_s, u"uno"_s}));
    QCOMPARE(QAccessible::queryAccessibleInterface(screen.named(u"Elegir foto"_s))->role(), QAccessible::Dialog);
    QCOMPARE(QAccessible::queryAccessibleInterface(screen.named(u"uno"_s))->role(), QAccessible::Button);
    screen.key(Qt::Key_Right);
    screen.key(Qt::Key_Escape);
    add(u"tres.png"_s, 1);
    open(screen, 3);
    screen.key(Qt::Key_Return);
    QCOMPARE(screen.root()->property("chosen").toUrl(), url(u"tres.png"_s));
}

void PhotoPickerTest::tapAndScreenReaderPick()
{
    add(u"uno.png"_s, 10);
    add(u"sub/dos ñ #%20.png"_s, 20);
    TestScreen screen(page());
    open(screen, 2);
    screen.tap(screen.named(u"dos ñ #%20"_s));
    QCOMPARE(screen.root()->property("picks").toInt(), 1);
    QCOMPARE(screen.root()->property("chosen").toUrl(), url(u"sub/dos ñ #%20.png"_s));
    QTRY_VERIFY(!shown(screen));
    open(screen, 2);
    TestScreen::press(screen.named(u"uno"_s));
    QCOMPARE(screen.root()->property("chosen").toUrl(), url(u"uno.png"_s));
    QTRY_VERIFY(!shown(screen));
}

void PhotoPickerTest::keyPicksUnlessItIsHeldFromBefore_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::newRow("Return") << Qt::Key_Return;
    QTest::newRow("Enter") << Qt::Key_Enter;
    QTest::newRow("Space") << Qt::Key_Space;
}

void PhotoPickerTest::keyPicksUnlessItIsHeldFromBefore()
{
    QFETCH(Qt::Key, key);
    add(u"uno.png"_s, 10);
    add(u"dos.png"_s, 20);
    TestScreen screen(page());
    screen.hold(key, true, [&] { open(screen, 2); });
    QCOMPARE(screen.root()->property("picks").toInt(), 0);
    QVERIFY(screen.named(u"uno"_s));
    screen.key(Qt::Key_Right);
    // The marked photo leaves five points to its ring.
    QList<QQuickItem *> views = screen.all(u"view"_s);
    views.removeIf([](const QQuickItem *view) { return view->scale() == 1; });
    QCOMPARE(views.size(), 1);
    QCOMPARE(qRound(views.first()->width() * (1 - views.first()->scale())), 10);
    screen.key(key);
    QCOMPARE(screen.root()->property("chosen").toUrl(), url(u"dos.png"_s));
    QTRY_VERIFY(!shown(screen));
    // The key that picks is still down when the picker has gone: it does not open it again.
    screen.find(u"below"_s)->forceActiveFocus(Qt::TabFocusReason);
    open(screen, 2);
    screen.hold(key, true, [&] { QTRY_VERIFY(!shown(screen)); });
    QCOMPARE(screen.root()->property("chosen").toUrl(), url(u"uno.png"_s));
    QCOMPARE(screen.root()->property("picks").toInt(), 2);
    QCOMPARE(screen.root()->property("presses").toInt(), 0);
}

void PhotoPickerTest::arrowsMoveAmongThePhotos()
{
    for (int i = 0; i < 30; ++i)
        add(u"%1.png"_s.arg(i), i);
    TestScreen screen(page());
    open(screen, 30);
    const auto isFocused = [&](const QString &name) {
        return bool(QAccessible::queryAccessibleInterface(screen.named(name))->state().focused);
    };
    QVERIFY(isFocused(u"0"_s));
    QVERIFY(!isFocused(u"1"_s));
    screen.key(Qt::Key_Right);
    QVERIFY(isFocused(u"1"_s));
    for (int i = 0; i < 9; ++i)
        screen.key(Qt::Key_Down);
    // It comes into view.
    QTRY_VERIFY(TestScreen::box(screen.named(u"28"_s)).bottom() <= 844 + 0.5);
    screen.key(Qt::Key_Return);
    QCOMPARE(screen.root()->property("chosen").toUrl(), url(u"28.png"_s));
}

void PhotoPickerTest::cancelPicksNothing()
{
    add(u"uno.png"_s, 10);
    TestScreen screen(page());
    for (const bool byTap : {true, false}) {
        screen.find(u"below"_s)->forceActiveFocus();
        open(screen, 1);
        if (byTap)
            screen.tap(screen.named(u"Cancelar"_s));
        else
            screen.key(Qt::Key_Back);
        QTRY_VERIFY(!shown(screen));
        QCOMPARE(screen.root()->property("picks").toInt(), 0);
        QCOMPARE(screen.names().last(), u"Tapado"_s);
        QVERIFY(!screen.named(u"Cancelar"_s) && !screen.named(u"uno"_s));
        // The keys are the screen's again.
        QVERIFY(screen.root()->property("activeFocus").toBool());
    }
}

void PhotoPickerTest::profileIsCoveredUntilEscapeClosesThePicker()
{
    add(u"uno.png"_s, 10);
    TestScreen screen(TestScreen::pushing("PerfilView {}"));
    screen.tap(screen.find(u"open"_s));
    QTRY_VERIFY(screen.settledAt(2));
    QQuickItem *const photo = screen.named(u"Cambiar foto"_s);
    photo->forceActiveFocus(Qt::TabFocusReason);
    screen.key(Qt::Key_Return);
    QTRY_COMPARE(count(screen), 1);
    screen.settle();
    QCOMPARE(screen.names(), QStringList({u"Elegir foto"_s, u"Cancelar"_s, u"Elegir foto"_s, u"uno"_s}));
    screen.key(Qt::Key_Escape);
    // The focus comes back to what opened the picker by key, and stays with the field that had it before a tap.
    QTRY_VERIFY(photo->property("visualFocus").toBool());
    QQuickItem *const name = screen.find(u"nombre"_s);
    screen.type(name, u"Ana"_s);
    screen.tap(photo);
    QVERIFY(shown(screen));
    screen.key(Qt::Key_Escape);
    QTRY_VERIFY(name->hasActiveFocus());
    QCOMPARE(screen.root()->property("depth").toInt(), 2);
    screen.key(Qt::Key_Escape);
    QTRY_VERIFY(screen.settledAt(1));
}

void PhotoPickerTest::focusCannotLeave()
{
    add(u"uno.png"_s, 10);
    TestScreen screen(page());
    open(screen, 1);
    const QQuickItem *const photos = screen.find(u"photos"_s);
    for (const Qt::Key key : {Qt::Key_Tab, Qt::Key_Backtab}) {
        QVERIFY(photos->hasActiveFocus());
        screen.key(key);
        QCOMPARE(screen.focusedName(), u"Cancelar"_s);
        screen.key(key);
    }
    QVERIFY(photos->hasActiveFocus());
}

void PhotoPickerTest::nothingBelowCanBeUsedWhileItFades()
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
    screen.tap(screen.named(u"Tapado"_s));
    QCOMPARE(screen.root()->property("presses").toInt(), 1);
}

void PhotoPickerTest::dialogOffersWhatCanBeDecoded()
{
    // There is no platform's dialog here: what is asked of it is.
    QVERIFY(QDir(path({})).mkpath(u"QtQuick/Dialogs"_s));
    addText(u"QtQuick/Dialogs/qmldir"_s, "module QtQuick.Dialogs\nFileDialog 6.0 FileDialog.qml\n");
    addText(u"QtQuick/Dialogs/FileDialog.qml"_s, R"qml(import QtQuick
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
    const QString endings = u"*.jpg *.JPG *.jpeg *.JPEG *.png *.PNG *.webp *.WEBP *.gif *.GIF *.bmp *.BMP"_s;
    QCOMPARE(dialog->property("nameFilters").toStringList(), QStringList(u"Imágenes (%1)"_s.arg(endings)));
    QCOMPARE(dialog->property("title").toString(), u"Elegir foto"_s);
    QCOMPARE(dialog->property("currentFolder").toUrl(), QUrl::fromLocalFile(path({}).chopped(1)));
}

MAROVENDA_TEST(PhotoPickerTest)
#include "tst_PhotoPicker.moc"
