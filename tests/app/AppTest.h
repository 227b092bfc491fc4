#pragma once

#include "Modules.h"
#include "ServiceTest.h"

#include <QQmlApplicationEngine>
#include <QQmlContext>
#include <QQuickItem>
#include <QQuickWindow>

#include <memory>

/// The root window from its start, against a scripted server.
class AppTest : public ServiceTest {
    Q_OBJECT
protected Q_SLOTS:
    void cleanup()
    {
        m_engine.reset();
        ServiceTest::cleanup();
    }

protected:
    QQuickWindow *start(QQmlAbstractUrlInterceptor *files = nullptr)
    {
        m_engine = std::make_unique<QQmlApplicationEngine>();
        addModules(*m_engine);
        if (files)
            m_engine->addUrlInterceptor(files);
        m_engine->load(QUrl(QStringLiteral("qrc:/Marovenda/App/MarovendaApp.qml")));
        return qobject_cast<QQuickWindow *>(m_engine->rootObjects().value(0));
    }
    /// The first item of this QML type or object name; null when there is none.
    static QQuickItem *find(const QQuickWindow *window, const QByteArray &what)
    {
        return findBelow(window->contentItem(), what);
    }
    /// What an id stands for in the window's layout.
    static QObject *byId(const QQuickWindow *window, const QString &id)
    {
        return qmlContext(window)->objectForName(id);
    }

    std::unique_ptr<QQmlApplicationEngine> m_engine;

private:
    static QQuickItem *findBelow(QQuickItem *from, const QByteArray &what)
    {
        if (QByteArray(from->metaObject()->className()).startsWith(what + "_QMLTYPE") ||
            from->objectName().toUtf8() == what)
            return from;
        const auto children = from->childItems();
        for (QQuickItem *child : children) {
            if (QQuickItem *const found = findBelow(child, what))
                return found;
        }
        return nullptr;
    }
};
