#pragma once

#include <QObject>
#include <QtQmlIntegration>

/// What the customer has set on the device and the look follows.
class PlatformSettings : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    /// The desktop's text size against its standard one: 1 at the standard, 2 at twice that size; 0.8 to 3.
    Q_PROPERTY(double textScale READ textScale NOTIFY textScaleChanged)
    /// True when one of the platform's settings asks programs not to move things.
    Q_PROPERTY(bool reducedMotion READ reducedMotion NOTIFY reducedMotionChanged)
    /// Whether the platform has a picker for photos of its own.
    Q_PROPERTY(bool photoPicker READ photoPicker NOTIFY photoPickerChanged)
public:
    explicit PlatformSettings(QObject *parent = nullptr);

    double textScale() const { return m_textScale; }
    bool reducedMotion() const { return m_animationsOff || m_motionReduced; }

    bool photoPicker() const { return m_photoPicker; }

    /// To be called before the application is made: lets the desktop's portal show its file dialog where no other
    /// platform theme was asked for.
    static void preferPortal();

    bool eventFilter(QObject *watched, QEvent *event) override;

Q_SIGNALS:
    void textScaleChanged();
    void reducedMotionChanged();
    void photoPickerChanged();

private:
    void readTextScale();
    void noteMotion(bool &wish, bool reduced);
    void askForMotion();
    void askForPhotoPicker();
    Q_SLOT void portalSettingChanged(const QString &area, const QString &key);

    double m_textScale = 1;
    bool m_animationsOff = false;
    bool m_motionReduced = false;
    bool m_photoPicker = false;
};
