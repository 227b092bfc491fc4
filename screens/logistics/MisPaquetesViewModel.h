#pragma once

#include "RecordListModel.h"
#include "Records.h"
#include "SessionState.h"
#include "ViewModel.h"

#include <QtQmlIntegration>

/// Lists all packages of the customer.
class MisPaquetesViewModel : public ViewModel {
    Q_OBJECT
    QML_ELEMENT
    SESSION_VALUE(qint64, userId, setUserId)
    Q_PROPERTY(QObject *paquetes READ paquetes CONSTANT)
public:
    explicit MisPaquetesViewModel(QObject *parent = nullptr);

    /// In the service's order. A row's identity is its tracking number.
    QAbstractItemModel *paquetes() { return &m_paquetes; }

    /// Fetches the packages. Call it whenever the screen appears.
    Q_INVOKABLE void cargarPaquetes();

private:
    RecordListModel<DashboardResponse::Paquete> m_paquetes;
};
