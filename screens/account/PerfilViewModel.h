#pragma once

#include "SessionState.h"
#include "State.h"
#include "ViewModel.h"

#include <QtQmlIntegration>
#include <QUrl>

/// The customer's name, e-mail and photo.
class PerfilViewModel : public ViewModel {
    Q_OBJECT
    QML_ELEMENT
    using Self = PerfilViewModel;
    SESSION_VALUE(qint64, userId, setUserId)
    /// Writing it stores it at once, before and whether or not the profile is saved.
    SESSION_FIELD(QString, userNombre, setUserNombre)
    SESSION_VALUE(QByteArray, userAvatarData, setUserAvatarData)
    STATE(QString, email, {})
    STATE(QString, msg, {})
    /// The file that was picked; empty while none was.
    STATE(QUrl, selectedItem, {})
    /// The photo on show: the stored one, or the one picked during this visit. Null while there is none.
    STATE(QByteArray, selectedImageData, {})
    /// The photo picked during this visit, in base64; empty without one.
    STATE(QString, avatarBase64, {})
public:
    using ViewModel::ViewModel;

    /// Shows the stored photo; to be called when the screen comes on screen.
    Q_INVOKABLE void mostrarFoto();
    /// Takes a picked file; the same file a second time is no change. What cannot be loaded changes nothing, and of
    /// those that can the one picked last is shown, in whatever order they come.
    Q_INVOKABLE void elegirFoto(const QUrl &item);
    /// Sends the profile as it stands. A success stores the photo on show when the reply comes.
    Q_INVOKABLE void guardarCambios();

private:
    quint64 m_picks = 0;
    quint64 m_loadedPick = 0;
};
