#pragma once

#include <QObject>
#include <QtQmlIntegration>

/// Tells whether the customer navigates by keyboard, for items that have no focus reason. Focus rings show only then.
class Keyboard : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    /// Becomes true with a key that moves the focus or presses a control, and false with the next tap or click. In a
    /// text field only Tab counts.
    Q_PROPERTY(bool navigating READ navigating NOTIFY navigatingChanged)
public:
    explicit Keyboard(QObject *parent = nullptr);

    bool navigating() const { return m_navigating; }

    bool eventFilter(QObject *watched, QEvent *event) override;

Q_SIGNALS:
    void navigatingChanged();

private:
    bool m_navigating = false;
};
