#pragma once

#include "SessionState.h"
#include "State.h"
#include "ViewModel.h"

#include <QtQmlIntegration>
#include <QUrl>

/// Edits the customer's name, e-mail and photo.
class PerfilViewModel : public ViewModel {
    Q_OBJECT
    QML_ELEMENT
    using Self = PerfilViewModel;
    SESSION_VALUE(qint64, userId, setUserId)
    /// Stored on the device at once, whether or not the profile is saved.
    SESSION_FIELD(QString, userNombre, setUserNombre)
    SESSION_VALUE(QByteArray, userAvatarData, setUserAvatarData)
    STATE(QString, email, {})
    STATE(QString, msg, {})
    /// The file that was picked; empty before the first pick.
    STATE(QUrl, selectedItem, {})
    /// The photo shown: the stored one, or the one picked since the screen was opened. Null if there is none.
    STATE(QByteArray, selectedImageData, {})
    /// The photo picked since the screen was opened, in base64; empty if there is none.
    STATE(QString, avatarBase64, {})
public:
    using ViewModel::ViewModel;

    /// Shows the stored photo. Call it when the screen appears.
    Q_INVOKABLE void mostrarFoto();
    /// Loads the picked file, unless it is the one picked last. A file that cannot be loaded changes nothing. If
    /// several files are loading, the one picked last is shown, whichever is loaded first.
    Q_INVOKABLE void elegirFoto(const QUrl &item);
    /// Sends the profile. On success, stores the photo that is shown when the reply arrives.
    Q_INVOKABLE void guardarCambios();

private:
    quint64 m_picks = 0;
    quint64 m_loadedPick = 0;
};
