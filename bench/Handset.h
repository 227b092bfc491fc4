#pragma once

#include "TimedApplication.h"

#include <QQmlApplicationEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QUrl>

#include <functional>

/// Runs the whole app in this process and operates it as a customer does, while the main thread is timed.
class Handset {
public:
    using Time = TimedApplication::Time;

    explicit Handset(TimedApplication &application);

    /// Shows a window, which is the app's own unless another one is named.
    void open(const QUrl &window = QUrl(QStringLiteral("qrc:/Marovenda/App/MarovendaApp.qml")));
    /// Waits for the dashboard with this number of packages.
    void waitForHome(int packages);

    /// Returns the visible item with this object name on the topmost screen. Aborts if there is none; `maybeItem`
    /// returns null instead.
    QQuickItem *item(const QString &objectName) const;
    QQuickItem *maybeItem(const QString &objectName) const;
    /// Returns the visible control with this text.
    QQuickItem *control(const QString &text) const;
    /// Returns the view model of the item's screen.
    static QObject *viewModelOf(const QQuickItem *item);
    /// Taps the middle of the item.
    void tap(const QQuickItem *item) const;
    void type(Qt::Key key, const QString &text) const;

    /// Waits until `holds` returns true, checking after each frame and 50 times a second. Aborts after two
    /// minutes.
    void until(const std::function<bool()> &holds) const;
    /// Waits for the first frame after which `holds` returns true, and returns the time at which it was finished.
    Time frameWith(const std::function<bool()> &holds) const;
    /// Runs the event loop for this time.
    static void rest(std::chrono::milliseconds time);

    QQmlEngine &engine() { return m_engine; }
    QQuickWindow &window() const { return *m_window; }
    TimedApplication &application() const { return m_application; }

private:
    TimedApplication &m_application;
    QQmlApplicationEngine m_engine;
    QQuickWindow *m_window = nullptr;
};

/// Returns the memory of this process in bytes, from a line of /proc/self/status: "VmRSS:" is the current size,
/// "VmHWM:" the peak.
qint64 memory(const QByteArray &line);
