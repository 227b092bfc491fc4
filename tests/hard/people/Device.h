#pragma once

#include "Model.h"
#include "ServiceTest.h"

#include <QQmlApplicationEngine>
#include <QQuickItem>
#include <QQuickWindow>

/// The real app in its window, with the service in the check's hands.
class Device : public ServiceTest {
    Q_OBJECT
public:
    /// Starts the app and waits for the end of its splash. Animations run fast from then on.
    Device();
    ~Device() override;

    /// At the first screen of a customer, or of nobody (0), with no request under way but that screen's own.
    void begin(qint64 user);

    void tap(const QString &objectName);
    void type(const QString &objectName, const QString &text);
    void key(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    void swipeBack();
    void scroll();
    /// Says the reply to the request that came at `index` among those unanswered.
    void answer(qsizetype index, const Reply &reply);

    /// Waits until nothing moves and as many requests have come, and are under way, as the model says; empty, or else
    /// what does not come.
    QString settle(const Model &model);
    /// In what the screen differs from the model; empty when in nothing.
    QString difference(const Model &model) const;

private:
    QQuickItem *page() const;
    QQuickItem *container() const;
    QQuickItem *find(const QString &objectName) const;
    static bool wait(const std::function<bool()> &come);

    QQmlApplicationEngine m_engine;
    QQuickWindow *m_window = nullptr;
};
