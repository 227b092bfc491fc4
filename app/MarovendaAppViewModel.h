#pragma once

#include "SessionState.h"
#include "State.h"
#include "ViewModel.h"

#include <QtQmlIntegration>

/// What the root shows: the splash at first, then the sign-in or the dashboard, by whether somebody is signed in.
class MarovendaAppViewModel : public ViewModel {
    Q_OBJECT
    QML_ELEMENT
    using Self = MarovendaAppViewModel;
    SESSION_VALUE(qint64, userId, setUserId)
    STATE(bool, showSplash, true)
    STATE(double, logoOpacity, 0.0)
    STATE(double, logoScale, 0.8)
    /// False for the customer number 0 only.
    Q_PROPERTY(bool someoneSignedIn READ someoneSignedIn NOTIFY someoneSignedInChanged)
public:
    explicit MarovendaAppViewModel(QObject *parent = nullptr);

    bool someoneSignedIn() const { return Session::instance().someoneSignedIn(); }

    /// To be called once, when the splash has appeared: the logo comes in, and 2.5 seconds later the splash goes.
    Q_INVOKABLE void iniciarSplash();
    /// Says on stderr, in one line, that the screens after the splash cannot be loaded, with the first of the
    /// reasons.
    Q_INVOKABLE static void faltanPantallas(const QString &reasons);

Q_SIGNALS:
    void someoneSignedInChanged();
};
