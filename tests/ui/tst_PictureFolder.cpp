#include "MarovendaTest.h"
#include "PictureFolder.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <semaphore>
#include <sys/stat.h>

using namespace Qt::StringLiterals;

class PictureFolderTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();

    void newestComesFirstAndOnlyPicturesAreListed();
    void noMoreThanTheNewestAreListed();
    void everyRefreshReadsTheFolderAnew();
    void stalledRefreshHoldsUpNoLaterOne();

private:
    QString path(const QString &name) const { return m_home->filePath(u"Pictures/"_s + name); }
    /// A file some minutes old.
    void add(const QString &name, int minutes) const
    {
        QFile file(path(name));
        if (!file.open(QFile::WriteOnly) ||
            !file.setFileTime(m_now.addSecs(-60 * minutes), QFile::FileModificationTime))
            qFatal("cannot write %s", qUtf8Printable(name));
    }
    static QStringList names(PictureFolder &folder)
    {
        const PictureList &list = *folder.pictures();
        QStringList all;
        for (int row = 0; row < folder.count(); ++row)
            all.append(list.data(list.index(row), list.roleNames().key("name")).toString());
        return all;
    }

    std::unique_ptr<QTemporaryDir> m_home;
    const QDateTime m_now = QDateTime::currentDateTime();
};

void PictureFolderTest::init()
{
    m_home = std::make_unique<QTemporaryDir>();
    qputenv("HOME", m_home->path().toLocal8Bit());
    QVERIFY(QDir(m_home->path()).mkpath(u"Pictures/sub/deeper"_s));
}

void PictureFolderTest::newestComesFirstAndOnlyPicturesAreListed()
{
    add(u"viejo.png"_s, 50);
    add(u"sub/tercero.webp"_s, 30);
    add(u"segundo.JPG"_s, 20);
    add(u"sub/deeper/primero ñ.v2.jpeg"_s, 10);
    add(u"cuarto.gif"_s, 40);
    add(u"quinto.bmp"_s, 45);
    for (const QString &other : {u".oculto.png"_s, u"notas.txt"_s, u"foto.png.part"_s, u"png"_s, u"dibujo.svg"_s})
        add(other, 1);
    QVERIFY(QDir(path({})).mkdir(u"carpeta.png"_s));
    QCOMPARE(mkfifo(path(u"tubo.png"_s).toLocal8Bit().constData(), 0600), 0);
    QVERIFY(QFile::link(path({}), path(u"sub/vuelta"_s)));
    PictureFolder folder;
    folder.refresh();
    QTRY_VERIFY(folder.ready());
    QCOMPARE(names(folder),
             QStringList({u"primero ñ.v2"_s, u"segundo"_s, u"tercero"_s, u"cuarto"_s, u"quinto"_s, u"viejo"_s}));
}

void PictureFolderTest::noMoreThanTheNewestAreListed()
{
    for (int i = 0; i < 4 * PictureFolder::most + 50; ++i)
        add(QString::number(i) + u".png"_s, i == 17 ? 60 : i == 4321 ? 0 : 30);
    PictureFolder folder;
    folder.refresh();
    QTRY_VERIFY(folder.ready());
    QCOMPARE(folder.count(), PictureFolder::most);
    QCOMPARE(names(folder).first(), u"4321"_s);
    QVERIFY(!names(folder).contains(u"17"_s));
}

void PictureFolderTest::everyRefreshReadsTheFolderAnew()
{
    PictureFolder folder;
    for (const QString &name : {u"uno"_s, u"dos"_s}) {
        QVERIFY(QDir(path({})).removeRecursively());
        QVERIFY(QDir().mkpath(path({})));
        add(name + u".png"_s, 10);
        folder.refresh();
        QVERIFY(!folder.ready());
        QTRY_VERIFY(folder.ready());
        QCOMPARE(names(folder), QStringList(name));
    }
}

void PictureFolderTest::stalledRefreshHoldsUpNoLaterOne()
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

MAROVENDA_TEST(PictureFolderTest)
#include "tst_PictureFolder.moc"
