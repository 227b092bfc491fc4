#pragma once

#include "SessionState.h"
#include "State.h"
#include "ViewModel.h"

#include <QtQmlIntegration>

/// Asking for a vehicle to be imported.
class ImportarAutoViewModel : public ViewModel {
    Q_OBJECT
    QML_ELEMENT
    using Self = ImportarAutoViewModel;
    SESSION_VALUE(qint64, userId, setUserId)
    STATE(QString, marca, {})
    STATE(QString, modelo, {})
    /// Kept and sent as text.
    STATE(QString, anio, {})
    STATE(QString, ubicacion, {})
    STATE(QString, msg, {})
public:
    using ViewModel::ViewModel;

    /// Sends the form exactly as it was typed, and leaves it as it is.
    Q_INVOKABLE void enviarSolicitud();
};
