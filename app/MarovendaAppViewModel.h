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
    /// False if the customer number is 0.
    Q_PROPERTY(bool someoneSignedIn READ someoneSignedIn NOTIFY someoneSignedInChanged)
public:
    explicit MarovendaAppViewModel(QObject *parent = nullptr);

    bool someoneSignedIn() const { return Session::instance().someoneSignedIn(); }

    /// Shows the logo, and ends the splash after 2.5 seconds. Call it once, when the splash has appeared.
    Q_INVOKABLE void iniciarSplash();
    /// Prints one line on stderr: the screens after the splash cannot be loaded, and the first of the reasons.
    Q_INVOKABLE static void faltanPantallas(const QString &reasons);

Q_SIGNALS:
    void someoneSignedInChanged();
};
