#pragma once

#include "RecordListModel.h"
#include "Records.h"
#include "SessionState.h"
#include "State.h"
#include "ViewModel.h"

#include <QtQmlIntegration>

/// The home of a signed-in customer: counts, the first rows of each list, tracking, signing out.
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

    /// How many rows the last reply held; 0 before the first one and after a failed one.
    int paqueteCount() const { return m_paqueteCount; }
    int cotizacionCount() const { return m_cotizacionCount; }
    /// At most three rows each, in the order received.
    QAbstractItemModel *paquetesRecientes() { return &m_paquetes; }
    QAbstractItemModel *cotizacionesRecientes() { return &m_cotizaciones; }

    /// Fetches the listing; to be called each time the screen comes on screen.
    Q_INVOKABLE void cargarDatos();
    /// Opens the tracking page of a number; nothing for an absent, empty or "N/A" one.
    Q_INVOKABLE void abrirTracking(const QVariant &codigo);
    Q_INVOKABLE void cerrarSesion();

Q_SIGNALS:
    void dataChanged();

private:
    /// Keeps of a reply what is shown: a customer may have many rows, and this screen lives as long as the session.
    void setData(const std::optional<DashboardResponse> &data);

    int m_paqueteCount = 0;
    int m_cotizacionCount = 0;
    RecordListModel<DashboardResponse::Paquete> m_paquetes;
    RecordListModel<DashboardResponse::Cotizacion> m_cotizaciones;
};
