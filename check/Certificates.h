#pragma once

#include <QList>
#include <QSslCertificate>
#include <QSslError>

namespace Check {

/// Returns the name that a certificate is for, and that of its issuer.
QString subjectOf(const QSslCertificate &certificate);
QString issuerOf(const QSslCertificate &certificate);

/// Returns why the certificates of a host were refused, each reason with how to fix it. OpenSSL reports one cause as
/// several errors; the result has one entry for each cause.
QList<std::pair<QString, QString>> whyRefused(const QList<QSslError> &errors, const QString &host);

} // namespace Check
