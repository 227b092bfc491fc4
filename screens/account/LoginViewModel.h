#pragma once

#include "SessionState.h"
#include "State.h"
#include "ViewModel.h"

#include <QtQmlIntegration>

/// Signing in, and asking for a new password.
class LoginViewModel : public ViewModel {
    Q_OBJECT
    QML_ELEMENT
    using Self = LoginViewModel;
    STATE(QString, email, {})
    STATE(QString, pass, {})
    /// The outcome of the last action; empty until there is one.
    STATE(QString, msg, {})
    STATE(bool, showRecuperarDialog, false)
    STATE(QString, recuperarEmail, {})
    SESSION_VALUE(qint64, userId, setUserId)
    SESSION_VALUE(QString, userNombre, setUserNombre)
    SESSION_VALUE(QString, userEmail, setUserEmail)
    Q_PROPERTY(QString supportEmail READ supportEmail CONSTANT)
public:
    QString supportEmail() const;

    /// Signs in with what was typed. A success writes the session, and the root then leaves this screen.
    Q_INVOKABLE void iniciarSesion();
    Q_INVOKABLE void abrirRecuperacion();
    /// Asks for a link to change the password, unless the address is empty.
    Q_INVOKABLE void enviarRecuperacion();
};
