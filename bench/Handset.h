#pragma once

#include "TimedApplication.h"

#include <QQmlApplicationEngine>
#include <QQuickItem>
#include <QQuickWindow>

#include <functional>

/// The whole app in this process, to be used as a customer uses it while its main thread is timed.
class Handset {
public:
    using Time = TimedApplication::Time;

    explicit Handset(TimedApplication &application);

    /// Shows the app's window. Whoever is signed in comes to the home screen, with this many packages.
    void open();
    void waitForHome(int packages);

    /// The visible item of an object name on the uppermost screen; ends the process when there is none.
    QQuickItem *item(const QString &objectName) const;
    QQuickItem *maybeItem(const QString &objectName) const;
    /// The visible control of this text.
    QQuickItem *control(const QString &text) const;
    /// The view model of the screen that an item belongs to.
    static QObject *viewModelOf(const QQuickItem *item);
    /// A tap in the middle of an item.
    void tap(const QQuickItem *item) const;
    void type(Qt::Key key, const QString &text) const;

    /// Waits until it holds, looking after each frame and every few milliseconds; ends the process when it never
    /// does.
    void until(const std::function<bool()> &holds) const;
    /// Until the frame in which it holds; when that frame was done.
    Time frameWith(const std::function<bool()> &holds) const;
    /// Lets the main loop run.
    static void rest(std::chrono::milliseconds time);

    QQuickWindow &window() const { return *m_window; }
    TimedApplication &application() const { return m_application; }

private:
    TimedApplication &m_application;
    QQmlApplicationEngine m_engine;
    QQuickWindow *m_window = nullptr;
};

/// Memory of this process, in bytes, by its line in the system's account: "VmRSS:" what it holds, "VmHWM:" the most
/// it held.
qint64 memory(const QByteArray &line);
