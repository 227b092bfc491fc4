#pragma once

#include <QObject>
#include <QtQmlIntegration>

/// How the customer gets about, for parts whose focus has no reason of its own: a focus ring is for those who use
/// keys.
class Keyboard : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    /// True from a key that moves the focus or presses, until the next tap or click. In a text field only Tab does.
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
