#pragma once

#include "RecordListModel.h"
#include "Records.h"
#include "SessionState.h"
#include "ViewModel.h"

#include <QtQmlIntegration>

/// Lists all quotations of the customer.
class MisCotizacionesViewModel : public ViewModel {
    Q_OBJECT
    QML_ELEMENT
    SESSION_VALUE(qint64, userId, setUserId)
    Q_PROPERTY(QObject *cotizaciones READ cotizaciones CONSTANT)
public:
    explicit MisCotizacionesViewModel(QObject *parent = nullptr);

    /// In the service's order. A row's identity is its position.
    QAbstractItemModel *cotizaciones() { return &m_cotizaciones; }

    /// Fetches the quotations. Call it whenever the screen appears.
    Q_INVOKABLE void cargarCotizaciones();

private:
    RecordListModel<DashboardResponse::Cotizacion> m_cotizaciones;
};
