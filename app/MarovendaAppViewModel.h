#pragma once

#include "SessionState.h"
#include "State.h"
#include "ViewModel.h"

#include <QtQmlIntegration>

/// Decides what the window shows: first the splash, then the sign-in or, if a customer is signed in, the dashboard.
class MarovendaAppViewModel : public ViewModel {
    Q_OBJECT
    QML_ELEMENT
    using Self = MarovendaAppViewModel;
    SESSION_VALUE(qint64, userId, setUserId)
    STATE(bool, showSplash, true)
    STATE(double, logoOpacity, 0.0)
    STATE(double, logoScale, 0.8)
    STATE(bool, fontsLoaded, false)
    /// False if the customer number is 0.
    Q_PROPERTY(bool someoneSignedIn READ someoneSignedIn NOTIFY someoneSignedInChanged)
public:
    explicit MarovendaAppViewModel(QObject *parent = nullptr);

    bool someoneSignedIn() const { return Session::instance().someoneSignedIn(); }

    /// Shows the logo, and ends the splash after 2.5 seconds. Call it once, when the splash has appeared.
    Q_INVOKABLE void iniciarSplash();
    /// Returns the flags of the window on a screen of this size, in points. A phone's screen has no room for a title
    /// bar, which Qt would draw where the shell draws none.
    Q_INVOKABLE static int windowFlags(int width, int height);
    /// Sets `fontsLoaded` once the system's fonts are loaded. Until then a text would hold up the main thread.
    Q_INVOKABLE void cargarFuentes();
    /// Prints one line on stderr: the screens after the splash cannot be loaded, and the first of the reasons.
    Q_INVOKABLE static void faltanPantallas(const QString &reasons);

Q_SIGNALS:
    void someoneSignedInChanged();
};
