#pragma once

#include "SessionState.h"
#include "State.h"
#include "ViewModel.h"

#include <QtQmlIntegration>

/// Signs a customer in, and requests a new password.
class LoginViewModel : public ViewModel {
    Q_OBJECT
    QML_ELEMENT
    using Self = LoginViewModel;
    STATE(QString, email, {})
    STATE(QString, pass, {})
    /// The result of the last action; empty before the first one.
    STATE(QString, msg, {})
    STATE(bool, showRecuperarDialog, false)
    STATE(QString, recuperarEmail, {})
    SESSION_VALUE(qint64, userId, setUserId)
    SESSION_VALUE(QString, userNombre, setUserNombre)
    SESSION_VALUE(QString, userEmail, setUserEmail)
    Q_PROPERTY(QString supportEmail READ supportEmail CONSTANT)
public:
    QString supportEmail() const;

    /// Signs in with `email` and `pass`. On success, writes the session; MarovendaApp then shows the dashboard.
    Q_INVOKABLE void iniciarSesion();
    Q_INVOKABLE void abrirRecuperacion();
    /// Requests a link for changing the password, unless `recuperarEmail` is empty.
    Q_INVOKABLE void enviarRecuperacion();
};
