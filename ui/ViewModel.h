#pragma once

#include <QObject>
#include <QQmlParserStatus>

#include <memory>

/// The base of the screens' view models, which hold the fields and actions of a screen. The screen's layout has
/// the view model as a property but does not own it: a reply that arrives after the screen has been closed still
/// reads and writes it. The view model must have no id: when an object with an id is deleted, Qt 6.4 uses the
/// object's page, which may be gone.
class ViewModel : public QObject, public QQmlParserStatus {
    Q_OBJECT
    Q_INTERFACES(QQmlParserStatus)
public:
    explicit ViewModel(QObject *parent = nullptr);

    void classBegin() override {}
    /// From now on the view model lives until its page and all pointers that `hold` has returned are gone.
    void componentComplete() override;

protected:
    /// Returns a pointer that keeps the view model alive; every completion that uses the view model must capture one.
    /// Null if no layout created the view model; its creator must then keep it alive.
    std::shared_ptr<ViewModel> hold() const { return m_self; }

private:
    std::shared_ptr<ViewModel> m_self;
};
