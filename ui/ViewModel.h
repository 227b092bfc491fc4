#pragma once

#include <QObject>
#include <QPointer>
#include <QQmlEngine>
#include <QQmlParserStatus>

#include <memory>

/// The fields and actions of a screen. The screen's layout declares its view model, but does not own it: a completion
/// that arrives after the screen has gone still writes to it, and reads what the customer had typed.
class ViewModel : public QObject, public QQmlParserStatus {
    Q_OBJECT
    Q_INTERFACES(QQmlParserStatus)
public:
    explicit ViewModel(QObject *parent = nullptr);

    void classBegin() override {}
    /// From here on the view model lives until its page and all that `hold` gave out are gone.
    void componentComplete() override;

protected:
    /// Keeps the view model alive; every completion that uses it captures one. Empty for a view model that no layout
    /// has made, which its maker must keep.
    std::shared_ptr<ViewModel> hold() const { return m_self; }

private:
    void end();

    std::shared_ptr<ViewModel> m_self;
    QPointer<QQmlEngine> m_engine;
    bool m_pageIsGoing = false;
};
