#pragma once

#include <QObject>
#include <QtQmlIntegration>

/// The customer's settings of the platform that affect the look of the app.
class PlatformSettings : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    /// The platform's text size divided by its standard text size; 0.8 to 3.
    Q_PROPERTY(double textScale READ textScale NOTIFY textScaleChanged)
    /// Whether one of the platform's settings asks for less motion.
    Q_PROPERTY(bool reducedMotion READ reducedMotion NOTIFY reducedMotionChanged)
    /// Whether the platform has its own photo picker.
    Q_PROPERTY(bool photoPicker READ photoPicker NOTIFY photoPickerChanged)
public:
    explicit PlatformSettings(QObject *parent = nullptr);

    double textScale() const { return m_textScale; }
    bool reducedMotion() const { return m_animationsOff || m_motionReduced; }

    bool photoPicker() const { return m_photoPicker; }

    /// Makes Qt use the file dialog of the desktop's portal, unless another platform theme is set. Call it before
    /// creating the application.
    static void preferPortal();

    bool eventFilter(QObject *watched, QEvent *event) override;

Q_SIGNALS:
    void textScaleChanged();
    void reducedMotionChanged();
    void photoPickerChanged();

private:
    void readTextScale();
    void setReduced(bool &setting, bool reduced);
    void followPortal();
    void queryPortal();
    void queryPhotoPicker();
    Q_SLOT void portalSettingChanged(const QString &area, const QString &key);

    double m_textScale = 1;
    /// GNOME's factor for all fonts, which Qt does not apply to its default font.
    double m_textFactor = 1;
    bool m_animationsOff = false;
    bool m_motionReduced = false;
    bool m_photoPicker = false;
};
