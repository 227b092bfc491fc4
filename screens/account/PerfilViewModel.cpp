#include "PerfilViewModel.h"

#include "ApiClient.h"
#include "Endpoints.h"
#include "PhotoFile.h"
#include "PhotoLoader.h"

using namespace Qt::StringLiterals;

static_assert(PerfilRequest::largestPhoto == largestPhotoFile);

void PerfilViewModel::mostrarFoto()
{
    if (const QByteArray stored = userAvatarData(); !stored.isEmpty())
        selectedImageData = stored;
}

void PerfilViewModel::elegirFoto(const QUrl &item)
{
    if (item == selectedItem.value())
        return;
    selectedItem = item;
    loadPhoto(item, this, [this, alive = hold(), pick = ++m_picks](const LoadedPhoto &photo) {
        // A slow drive may deliver an earlier pick after a later one.
        if (pick < m_loadedPick)
            return;
        m_loadedPick = pick;
        selectedImageData = photo.bytes;
        avatarBase64 = photo.base64;
    });
}

void PerfilViewModel::guardarCambios()
{
    const PerfilRequest request{
        .user_id = userId(),
        .nombre = userNombre(),
        .email = email,
        .password = {},
        .avatar_base64 = avatarBase64,
    };
    ApiClient::instance().post<StandardResponse>(
        Endpoints::perfil, request, [this, alive = hold()](const std::optional<StandardResponse> &reply) {
            if (!reply || reply->status != u"success"_s) {
                msg = u"Error al actualizar"_s;
                return;
            }
            msg = u"Perfil actualizado con éxito"_s;
            if (!selectedImageData.value().isNull())
                setUserAvatarData(selectedImageData);
        });
}
