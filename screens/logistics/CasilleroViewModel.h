#pragma once

#include "SessionState.h"
#include "State.h"
#include "ViewModel.h"

#include <QtQmlIntegration>

/// Shows the customer's mailbox: the name to put on parcels, and the warehouse's address.
class CasilleroViewModel : public ViewModel {
    Q_OBJECT
    QML_ELEMENT
    using Self = CasilleroViewModel;
    SESSION_VALUE(qint64, userId, setUserId)
    /// The customer's full name; a placeholder until it is fetched.
    STATE(QString, info, QStringLiteral("Cargando..."))
    Q_PROPERTY(QString direccion READ direccion CONSTANT)
public:
    using ViewModel::ViewModel;

    /// Returns five lines, each with a label and a value.
    QString direccion() const;

    /// Fetches the name. Call it whenever the screen appears.
    Q_INVOKABLE void cargarCasillero();
};
