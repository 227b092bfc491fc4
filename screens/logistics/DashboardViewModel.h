#pragma once

#include "RecordListModel.h"
#include "Records.h"
#include "SessionState.h"
#include "State.h"
#include "ViewModel.h"

#include <QtQmlIntegration>

/// The dashboard of a signed-in customer: shows the number and the first rows of packages and quotations, tracks
/// packages, and signs out.
class DashboardViewModel : public ViewModel {
    Q_OBJECT
    QML_ELEMENT
    using Self = DashboardViewModel;
    SESSION_VALUE(qint64, userId, setUserId)
    SESSION_STATE(QString, userNombre, setUserNombre)
    SESSION_STATE(QByteArray, userAvatarData, setUserAvatarData)
    STATE(QString, trackingText, {})
    Q_PROPERTY(int paqueteCount READ paqueteCount NOTIFY dataChanged)
    Q_PROPERTY(int cotizacionCount READ cotizacionCount NOTIFY dataChanged)
    Q_PROPERTY(QObject *paquetesRecientes READ paquetesRecientes CONSTANT)
    Q_PROPERTY(QObject *cotizacionesRecientes READ cotizacionesRecientes CONSTANT)
public:
    explicit DashboardViewModel(QObject *parent = nullptr);

    /// The number of rows in the last reply; 0 before the first reply and after a failure.
    int paqueteCount() const { return m_paqueteCount; }
    int cotizacionCount() const { return m_cotizacionCount; }
    /// The first three rows at most, in the service's order.
    QAbstractItemModel *paquetesRecientes() { return &m_paquetes; }
    QAbstractItemModel *cotizacionesRecientes() { return &m_cotizaciones; }

    /// Fetches packages and quotations. Call it whenever the screen appears.
    Q_INVOKABLE void cargarDatos();
    /// Opens the tracking page of a tracking number, unless it is undefined, empty or "N/A".
    Q_INVOKABLE void abrirTracking(const QVariant &codigo);
    Q_INVOKABLE void cerrarSesion();

Q_SIGNALS:
    void dataChanged();

private:
    /// Keeps only the data shown: a customer may have many rows, and the dashboard exists as long as the session.
    void setData(const std::optional<DashboardResponse> &data);

    int m_paqueteCount = 0;
    int m_cotizacionCount = 0;
    RecordListModel<DashboardResponse::Paquete> m_paquetes;
    RecordListModel<DashboardResponse::Cotizacion> m_cotizaciones;
};
