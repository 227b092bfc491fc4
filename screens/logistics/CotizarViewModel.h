#pragma once

#include "SessionState.h"
#include "State.h"
#include "ViewModel.h"

#include <QtQmlIntegration>

/// Requests a freight quotation.
class CotizarViewModel : public ViewModel {
    Q_OBJECT
    QML_ELEMENT
    using Self = CotizarViewModel;
    SESSION_VALUE(qint64, userId, setUserId)
    /// The chosen one of `tipos`.
    STATE(QString, tipo, QStringLiteral("Aéreo"))
    STATE(QString, origen, QStringLiteral("Miami, USA"))
    STATE(QString, destino, QStringLiteral("Panamá"))
    /// In pounds, as typed.
    STATE(QString, peso, {})
    /// In US dollars, as typed.
    STATE(QString, valor, {})
    STATE(QString, descripcion, {})
    STATE(QString, msg, {})
    Q_PROPERTY(QStringList tipos READ tipos CONSTANT)
public:
    using ViewModel::ViewModel;

    QStringList tipos() const;

    /// Sends the form, with 0 for numbers that cannot be parsed. On success, clears the fields.
    Q_INVOKABLE void enviarCotizacion();
};
