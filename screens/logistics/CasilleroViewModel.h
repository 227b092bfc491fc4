#pragma once

#include "SessionState.h"
#include "State.h"
#include "ViewModel.h"

#include <QtQmlIntegration>

/// The customer's mailbox: the name to address parcels to, and the warehouse's address.
class CasilleroViewModel : public ViewModel {
    Q_OBJECT
    QML_ELEMENT
    using Self = CasilleroViewModel;
    SESSION_VALUE(qint64, userId, setUserId)
    /// The customer's full name once it is known.
    STATE(QString, info, QStringLiteral("Cargando..."))
    Q_PROPERTY(QString direccion READ direccion CONSTANT)
public:
    using ViewModel::ViewModel;

    /// Five lines, each a label and a value.
    QString direccion() const;

    /// Fetches the name; to be called each time the screen is shown.
    Q_INVOKABLE void cargarCasillero();
};
