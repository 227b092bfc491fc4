#pragma once

#include "SessionState.h"
#include "State.h"
#include "ViewModel.h"

#include <QtQmlIntegration>

/// Creating an account.
class RegistroViewModel : public ViewModel {
    Q_OBJECT
    QML_ELEMENT
    using Self = RegistroViewModel;
    STATE(QString, nom, {})
    STATE(QString, email, {})
    STATE(QString, direccion, {})
    STATE(QString, ciudad, {})
    STATE(QString, pass, {})
    /// The outcome of the last action; empty until there is one.
    STATE(QString, msg, {})
    SESSION_VALUE(qint64, userId, setUserId)
    SESSION_VALUE(QString, userNombre, setUserNombre)
    SESSION_VALUE(QString, userEmail, setUserEmail)
public:
    using ViewModel::ViewModel;

    /// Sends what was typed, without blanks around it, once nothing is missing and the password is allowed. A success
    /// writes the session, and the root then leaves this screen.
    Q_INVOKABLE void registrar();
};
