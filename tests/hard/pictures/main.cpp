// What check.py runs: shows one picture and tells what it cost, or makes good ones.

#include "Contents.h"
#include "PhotoDecoder.h"
#include "PhotoLoader.h"
#include "PhotoView.h"
#include "Watch.h"

#include <QColorSpace>
#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QImageWriter>
#include <QPainter>
#include <QQuickWindow>

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
    /// file; `good` after it.
    void show(const QString &how, const QString &path, const QString &good)
    {
        PhotoView marker(m_window.contentItem());
        marker.setSize({100, 100});
        QObject::connect(&marker, &PhotoView::decodedChanged, [] { QGuiApplication::exit(); });
        const bool fromFile = how == u"listed"_s;
        const auto mark = [&marker, fromFile, &good] {
            if (fromFile)
                marker.setFile(QUrl::fromLocalFile(good));
            else
                marker.setPhoto(contents(good));
        };
        if (how == u"picked"_s) {
            pick(path, mark);
        } else {
            m_view.asked = mark;
            if (fromFile)
                m_view.setFile(QUrl::fromLocalFile(path));
            else
                m_view.setPhoto(m_stored);
        }
        QGuiApplication::exec();
    }

    bool decoded() const { return m_view.decoded(); }

private:
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

/// Of a field of the process's status, in MiB.
double memory(const QByteArray &field)
{
    const QByteArray status = contents(u"/proc/self/status"_s);
    const qsizetype at = status.indexOf(field + ':') + field.size() + 1;
    return status.mid(at).trimmed().split(' ').first().toDouble() / 1024;
}

/// Forgets the most memory that the process has had; returns how much it has now.
double startMemory()
{
    QFile file(u"/proc/self/clear_refs"_s);
    if (!file.open(QFile::WriteOnly) || file.write("5") != 1)
        qFatal("cannot reset the peak of memory");
    return memory("VmRSS");
}

/// show HOW FILE GOOD: prints whether there is a picture, the longest gap and run of the window's thread in
/// milliseconds, the seconds and the memory that it took in MiB.
int show(const QStringList &arguments)
{
    // A first window with a picture, whatever that costs.
    Stage first;
    first.show(u"picked"_s, arguments[2], arguments[2]);
    if (!first.decoded())
        qFatal("A good picture does not show");
    Stage stage;
    const double before = startMemory();
    if (arguments[0] == u"stored"_s)
        stage.read(arguments[1]);
    const Watch watch;
    QElapsedTimer clock;
    clock.start();
    stage.show(arguments[0], arguments[1], arguments[2]);
    std::printf("%d %.0f %.0f %.1f %.0f\n", stage.decoded(), watch.longestGap(), watch.longestRun(),
                static_cast<double>(clock.elapsed()) / 1000, memory("VmHWM") - before);
    return 0;
}

QImage drawn(QSize size, QImage::Format format)
{
    QImage image(size, QImage::Format_ARGB32);
    image.fill(Qt::blue);
    QPainter painter(&image);
    painter.fillRect(0, 0, size.width() / 2, size.height(), Qt::red);
    painter.drawLine(0, 0, size.width(), size.height());
    painter.end();
    return image.convertToFormat(format);
}

/// make FOLDER: writes good pictures, in the variants of each format that Qt writes, small enough to be decoded very
/// often: KIND-NAME, where KIND is "png", "jpeg" or "webp".
int make(const QStringList &arguments)
{
    const auto write = [&arguments](const QByteArray &kind, const QString &name, const QImage &image,
                                    int quality = -1) {
        const QString path = arguments[0] + u'/' + QString::fromLatin1(kind) + u'-' + name;
        QImageWriter writer(path, kind);
        writer.setQuality(quality);
        writer.setProgressiveScanWrite(name == u"progressive");
        if (!writer.write(image) || decodePhoto(contents(path), 20).isNull())
            qFatal("%s is not written or not decoded", qUtf8Printable(path));
    };
    for (const auto format :
         {QImage::Format_RGB32, QImage::Format_ARGB32, QImage::Format_Indexed8, QImage::Format_Mono,
          QImage::Format_Grayscale8, QImage::Format_RGBX64, QImage::Format_RGBA64})
        write("png", QString::number(format), drawn({31, 22}, format));
    QImage chatty = drawn({33, 20}, QImage::Format_RGB32);
    chatty.setText(u"Comment"_s, QString(3000, u'x'));
    chatty.setColorSpace(QColorSpace::DisplayP3);
    for (const char *kind : {"png", "jpeg", "webp"})
        write(kind, u"chatty"_s, chatty, 80);
    const QImage picture = drawn({40, 31}, QImage::Format_RGB32);
    write("jpeg", u"baseline"_s, picture, 90);
    write("jpeg", u"progressive"_s, picture, 40);
    write("jpeg", u"grey"_s, drawn({33, 20}, QImage::Format_Grayscale8), 80);
    const QImage clear = drawn({25, 18}, QImage::Format_ARGB32);
    for (const int quality : {40, 100}) {
        write("webp", u"picture-%1"_s.arg(quality), picture, quality);
        write("webp", u"clear-%1"_s.arg(quality), clear, quality);
    }
    return 0;
}

} // namespace

int main(int argc, char *argv[])
{
    const QGuiApplication application(argc, argv);
    const QStringList arguments = QGuiApplication::arguments();
    return arguments.value(1) == u"make"_s ? make(arguments.sliced(2)) : show(arguments.sliced(2));
}
