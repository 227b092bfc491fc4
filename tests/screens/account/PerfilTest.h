#pragma once

#include "ServiceTest.h"
#include "Session.h"
#include "TestScreen.h"

#include <QAccessible>
#include <QBuffer>
#include <QFile>
#include <QMetaProperty>
#include <QTemporaryDir>
#include <QTest>
#include <QVariantMap>

#include <memory>

using namespace Qt::StringLiterals;

/// The profile of a customer, and a folder of photos to pick from.
class PerfilTest : public ServiceTest {
protected:
    inline static const QString saved = u"Perfil actualizado con éxito"_s;
    inline static const QString failure = u"Error al actualizar"_s;

    void init()
    {
        ServiceTest::init();
        m_folder = std::make_unique<QTemporaryDir>();
        Session::instance().setUserId(42);
        Session::instance().setUserNombre(u"Ana"_s);
        Session::instance().setUserEmail(u"ana@x"_s);
    }
    /// On a container's bottom, so that it comes on screen at once.
    static QByteArray perfil() { return "NavigationContainer { root: Component { PerfilView {} } }"; }
    /// Opened from another screen by its button.
    static QByteArray opened() { return TestScreen::pushing("PerfilView {}"); }
    static void open(TestScreen &screen)
    {
        screen.tap(screen.find(u"open"_s));
        QTRY_VERIFY(screen.settledAt(2));
    }
    static void leave(TestScreen &screen)
    {
        screen.tap(screen.named(u"Atrás"_s));
        QTRY_VERIFY(screen.settledAt(1));
    }
    /// All that the screen holds but the message.
    static QVariantMap state(const TestScreen &screen)
    {
        const QObject *const viewModel = screen.viewModelOf(u"msg"_s);
        QVariantMap all;
        for (int i = 0; i < viewModel->metaObject()->propertyCount(); ++i) {
            const QString name = QString::fromLatin1(viewModel->metaObject()->property(i).name());
            if (name != u"msg"_s)
                all.insert(name, viewModel->metaObject()->property(i).read(viewModel));
        }
        return all;
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
