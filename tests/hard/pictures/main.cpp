// What check.py runs: shows one picture, or decodes many damaged ones, and tells what it cost.

#include "Contents.h"
#include "Corpus.h"
#include "Mutations.h"
#include "PhotoLoader.h"
#include "PhotoView.h"
#include "Watch.h"

#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QQuickWindow>
#include <QTimer>

#include <cstdio>
#include <functional>
#include <memory>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

/// Tells when it has asked for its picture to be decoded.
class ObservedView : public PhotoView {
public:
    using PhotoView::PhotoView;

    std::function<void()> asked;

protected:
    void updatePolish() override
    {
        PhotoView::updatePolish();
        if (asked)
            QMetaObject::invokeMethod(this, std::exchange(asked, {}), Qt::QueuedConnection);
    }
};

/// A window with the picture in question, and one beside it that is good: what comes in the same way is decoded in
/// the order of its coming, so once the good one shows, the other has been dealt with.
class Stage {
public:
    Stage()
    {
        m_window.resize(200, 100);
        m_view.setSize({100, 100});
        m_window.show();
    }

    /// Reads a file, to show it as a stored photo.
    void read(const QString &path) { m_stored = contents(path); }

    /// Shows a file as `how` says: as the stored photo that was read, as a file of the picker's, or as the picked
    /// file; `good` after it. False when that does not end.
    bool show(const QString &how, const QString &path, const QString &good)
    {
        bool ended = true;
        PhotoView marker(m_window.contentItem());
        marker.setSize({100, 100});
        QObject::connect(&marker, &PhotoView::decodedChanged, [] { QGuiApplication::exit(); });
        const bool fromFile = how == u"listed"_s;
        const auto mark = [&marker, fromFile, &good] {
            if (fromFile)
                marker.setFile(QUrl::fromLocalFile(good));
            else
                marker.setPhoto(picture("png", {8, 8}));
        };
        QTimer::singleShot(120'000, &marker, [&ended] {
            ended = false;
            QGuiApplication::exit();
        });
        if (how == u"picked"_s)
            pick(path, mark);
        else
            start(path, mark);
        QGuiApplication::exec();
        return ended;
    }

    /// Goes so many milliseconds after the stored photo began to be decoded, or the picked one to be loaded.
    void leave(const QString &how, const QString &path, int after)
    {
        const auto go = [after] { QTimer::singleShot(after, qApp, [] { QGuiApplication::exit(); }); };
        if (how == u"picked"_s) {
            // As a screen's model, which goes with its last completion.
            const std::shared_ptr<QObject> alive(new QObject, [](QObject *gone) { gone->deleteLater(); });
            loadPhoto(QUrl::fromLocalFile(path), qApp, [alive](auto) {});
            go();
        } else {
            read(path);
            start(path, go);
        }
        QGuiApplication::exec();
    }

    bool decoded() const { return m_view.decoded(); }
    /// How many bytes were handed over when the file was picked; -1 for none.
    qsizetype loaded() const { return m_loaded.bytes.isNull() ? -1 : m_loaded.bytes.size(); }

private:
    /// The bytes read before, or else the file.
    void start(const QString &path, const std::function<void()> &asked)
    {
        m_view.asked = asked;
        if (m_stored.isNull())
            m_view.setFile(QUrl::fromLocalFile(path));
        else
            m_view.setPhoto(m_stored);
    }

    void pick(const QString &path, const std::function<void()> &mark)
    {
        // Gone as soon as the photo has been handed over or will not be.
        const std::shared_ptr<void> underWay(nullptr, [this, mark](void *) {
            if (m_loaded.bytes.isNull())
                mark();
        });
        loadPhoto(QUrl::fromLocalFile(path), &m_window, [this, mark, underWay](const LoadedPhoto &photo) {
            m_loaded = photo;
            m_view.asked = mark;
            m_view.setPhoto(photo.bytes);
        });
    }

    QQuickWindow m_window;
    ObservedView m_view{m_window.contentItem()};
    QByteArray m_stored;
    LoadedPhoto m_loaded;
};

/// A window in which a first picture has been shown, whatever that costs.
void warmUp(const QString &good)
{
    Stage stage;
    if (!stage.show(u"picked"_s, good, good) || !stage.decoded())
        qFatal("A good picture does not show");
}

/// show HOW FILE GOOD: prints whether it ended, whether there is a picture, the bytes that were picked, the longest
/// gap and run of the window's thread in milliseconds, the seconds and the memory that it took in MiB.
int show(const QStringList &arguments)
{
    warmUp(arguments[2]);
    Stage stage;
    Watch::forgetPeak();
    const double before = Watch::memory();
    if (arguments[0] == u"stored"_s)
        stage.read(arguments[1]);
    const Watch watch;
    QElapsedTimer clock;
    clock.start();
    const bool ended = stage.show(arguments[0], arguments[1], arguments[2]);
    std::printf("%d %d %lld %.0f %.0f %.1f %.0f\n", ended, stage.decoded(), static_cast<long long>(stage.loaded()),
                watch.longestGap(), watch.longestRun(), static_cast<double>(clock.elapsed()) / 1000,
                Watch::peakMemory() - before);
    std::fflush(stdout);
    // A file that does not end would keep the process.
    if (!ended)
        std::_Exit(1);
    return 0;
}

/// leave HOW FILE MILLISECONDS: ends while a stored photo is being decoded or a picked one loaded.
int leave(const QStringList &arguments)
{
    Stage stage;
    stage.leave(arguments[0], arguments[1], arguments[2].toInt());
    return 0;
}

/// make FORMAT WIDTH HEIGHT QUALITY FILE
int make(const QStringList &arguments)
{
    QFile file(arguments[4]);
    const QByteArray bytes = picture(arguments[0].toLatin1().constData(),
                                     {arguments[1].toInt(), arguments[2].toInt()}, arguments[3].toInt());
    return file.open(QFile::WriteOnly) && file.write(bytes) == bytes.size() ? 0 : 1;
}

/// mutate FORMAT SEED COUNT, cut FORMAT STEPS: prints what failed and at last the memory that it took in MiB.
int damage(const QStringList &arguments, int (*run)(const QStringList &))
{
    tryCuts(arguments[1].toLatin1(), 1);
    Watch::forgetPeak();
    const double before = Watch::memory();
    const int failures = run(arguments);
    std::printf("memory %.0f\n", Watch::peakMemory() - before);
    return failures ? 1 : 0;
}

int mutate(const QStringList &arguments)
{
    return tryMutations(arguments[1].toLatin1(), arguments[2].toUInt(), arguments[3].toInt());
}

int cut(const QStringList &arguments) { return tryCuts(arguments[1].toLatin1(), arguments[2].toInt()); }

} // namespace

int main(int argc, char *argv[])
{
    const QGuiApplication application(argc, argv);
    const QStringList arguments = QGuiApplication::arguments().sliced(1);
    const QString what = arguments.value(0);
    if (what == u"show"_s && arguments.size() == 4)
        return show(arguments.sliced(1));
    if (what == u"leave"_s && arguments.size() == 4)
        return leave(arguments.sliced(1));
    if (what == u"make"_s && arguments.size() == 6)
        return make(arguments.sliced(1));
    if (what == u"mutate"_s && arguments.size() == 4)
        return damage(arguments, mutate);
    if (what == u"cut"_s && arguments.size() == 3)
        return damage(arguments, cut);
    qCritical("what is to be done?");
    return 2;
}
