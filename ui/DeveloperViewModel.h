#pragma once

#include "ViewModel.h"

#include <QtQmlIntegration>
#include <QUrl>

/// Who made the app, with two links. An address that forms no link is empty.
class DeveloperViewModel : public ViewModel {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(bool haySitio READ haySitio CONSTANT)
    Q_PROPERTY(bool hayCorreo READ hayCorreo CONSTANT)
    Q_PROPERTY(QUrl sitio READ sitio CONSTANT)
    Q_PROPERTY(QString sitioTexto READ sitioTexto CONSTANT)
    Q_PROPERTY(QUrl correo READ correo CONSTANT)
    Q_PROPERTY(QString correoTexto READ correoTexto CONSTANT)
public:
    using ViewModel::ViewModel;

    bool haySitio() const { return !sitio().isEmpty(); }
    bool hayCorreo() const { return !correo().isEmpty(); }
    QUrl sitio() const;
    QString sitioTexto() const;
    QUrl correo() const;
    QString correoTexto() const;

    /// Hands a link to the system.
    Q_INVOKABLE void abrir(const QUrl &link) const;
};
