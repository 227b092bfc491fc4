#pragma once

#include "Absent.h"

#include <QObject>
#include <QtQmlIntegration>

/// The texts in Absent.h, for use in QML.
class AbsentTexts : public QObject {
    Q_OBJECT
    QML_NAMED_ELEMENT(Absent)
    QML_SINGLETON
    Q_PROPERTY(QString tracking MEMBER m_tracking CONSTANT)
    Q_PROPERTY(QString origen MEMBER m_origen CONSTANT)
    Q_PROPERTY(QString descripcion MEMBER m_descripcion CONSTANT)
    Q_PROPERTY(QString titulo MEMBER m_titulo CONSTANT)
    Q_PROPERTY(QString estadoPaquete MEMBER m_estadoPaquete CONSTANT)
    Q_PROPERTY(QString estadoCotizacion MEMBER m_estadoCotizacion CONSTANT)

    const QString m_tracking = Absent::tracking.toString();
    const QString m_origen = Absent::origen.toString();
    const QString m_descripcion = Absent::descripcion.toString();
    const QString m_titulo = Absent::titulo.toString();
    const QString m_estadoPaquete = Absent::estadoPaquete.toString();
    const QString m_estadoCotizacion = Absent::estadoCotizacion.toString();
};
