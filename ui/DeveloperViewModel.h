#pragma once

#include "ViewModel.h"

#include <QtQmlIntegration>
#include <QUrl>

/// The links to the app's developer. `sitio` or `correo` is empty if the configured address is not a valid link.
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

    /// Opens the link in the system's browser or mail program.
    Q_INVOKABLE void abrir(const QUrl &link) const;
};
