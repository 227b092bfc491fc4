#include "DeveloperViewModel.h"

#include "Deployment.h"
#include "Links.h"

using namespace Qt::StringLiterals;

QUrl DeveloperViewModel::sitio() const { return Links::fromText(Deployment::developerSite()); }
QString DeveloperViewModel::sitioTexto() const { return Deployment::developerSiteText(); }

QUrl DeveloperViewModel::correo() const
{
    // An address may contain what separates the parts of a link.
    const QByteArray address = QUrl::toPercentEncoding(Deployment::developerEmail(), "@+");
    return Links::fromText(u"mailto:"_s + QString::fromLatin1(address));
}

QString DeveloperViewModel::correoTexto() const { return Deployment::developerEmail(); }

void DeveloperViewModel::abrir(const QUrl &link) const { Links::open(link); }
