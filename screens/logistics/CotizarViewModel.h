#pragma once

#include "SessionState.h"
#include "State.h"
#include "ViewModel.h"

#include <QtQmlIntegration>

/// Asking for a freight quotation.
class CotizarViewModel : public ViewModel {
    Q_OBJECT
    QML_ELEMENT
    using Self = CotizarViewModel;
    SESSION_VALUE(qint64, userId, setUserId)
    /// The chosen option's label.
    STATE(QString, tipo, QStringLiteral("Aéreo"))
    STATE(QString, origen, QStringLiteral("Miami, USA"))
    STATE(QString, destino, QStringLiteral("Panamá"))
    /// Pounds, as typed.
    STATE(QString, peso, {})
    /// US dollars, as typed.
    STATE(QString, valor, {})
    STATE(QString, descripcion, {})
    STATE(QString, msg, {})
    Q_PROPERTY(QStringList tipos READ tipos CONSTANT)
public:
    using ViewModel::ViewModel;

    /// The labels that can be chosen, in their order.
    QStringList tipos() const;

    /// Sends the form as it stands, unreadable numbers as 0. A success empties what was typed.
    Q_INVOKABLE void enviarCotizacion();
};
