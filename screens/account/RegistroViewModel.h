#pragma once

#include "SessionState.h"
#include "State.h"
#include "ViewModel.h"

#include <QtQmlIntegration>

/// Creates an account.
class RegistroViewModel : public ViewModel {
    Q_OBJECT
    QML_ELEMENT
    using Self = RegistroViewModel;
    STATE(QString, nom, {})
    STATE(QString, email, {})
    STATE(QString, direccion, {})
    STATE(QString, ciudad, {})
    STATE(QString, pass, {})
    /// The result of the last action; empty before the first one.
    STATE(QString, msg, {})
    SESSION_VALUE(qint64, userId, setUserId)
    SESSION_VALUE(QString, userNombre, setUserNombre)
    SESSION_VALUE(QString, userEmail, setUserEmail)
public:
    using ViewModel::ViewModel;

    /// Sends the trimmed fields if none is empty and the password is allowed. On success, writes the session;
    /// MarovendaApp then shows the dashboard.
    Q_INVOKABLE void registrar();
};
