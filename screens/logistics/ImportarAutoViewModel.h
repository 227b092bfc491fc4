#pragma once

#include "SessionState.h"
#include "State.h"
#include "ViewModel.h"

#include <QtQmlIntegration>

/// Requests the import of a vehicle.
class ImportarAutoViewModel : public ViewModel {
    Q_OBJECT
    QML_ELEMENT
    using Self = ImportarAutoViewModel;
    SESSION_VALUE(qint64, userId, setUserId)
    STATE(QString, marca, {})
    STATE(QString, modelo, {})
    /// The year, sent as text.
    STATE(QString, anio, {})
    STATE(QString, ubicacion, {})
    STATE(QString, msg, {})
public:
    using ViewModel::ViewModel;

    /// Sends the form as typed, and keeps the fields.
    Q_INVOKABLE void enviarSolicitud();
};
