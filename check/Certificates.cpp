#include "Certificates.h"

#include "Text.h"

#include <QDateTime>
#include <QRegularExpression>
#include <QSslKey>

using namespace Qt::StringLiterals;

namespace {

using Check::quoted;

QString day(const QDateTime &time) { return time.toUTC().toString(u"yyyy-MM-dd"_s); }

QString nameOf(const QStringList &commonNames, const QStringList &organizations)
{
    return commonNames.value(0, organizations.value(0, u"(without a name)"_s));
}

/// Returns the names of hosts that the certificate is valid for.
QString hostsOf(const QSslCertificate &certificate)
{
    QStringList hosts;
    for (const QString &name : certificate.subjectAlternativeNames())
        hosts += quoted(name);
    hosts.sort();
    return hosts.isEmpty() ? quoted(Check::subjectOf(certificate)) : hosts.join(u", "_s);
}

/// Returns why OpenSSL refuses the certificate as too weak, for which Qt has no text.
QString weaknessOf(const QSslCertificate &certificate)
{
    const QSslKey key = certificate.publicKey();
    if (key.algorithm() != QSsl::Ec && key.length() > 0 && key.length() < 2048)
        return u"has a key of %1 bits"_s.arg(key.length());
    static const QRegularExpression signature(u"Signature Algorithm: \\S*(SHA1|MD5)"_s,
                                              QRegularExpression::CaseInsensitiveOption);
    const auto weak = signature.match(certificate.toText());
    return weak.hasMatch() ? u"is signed with "_s + weak.captured(1).toUpper() : u"is too weak"_s;
}

/// A reason and its remedy.
using Refusal = std::pair<QString, QString>;

Refusal refusalFor(const QSslError &error, const QString &host)
{
    const QSslCertificate &certificate = error.certificate();
    const QString issuer = quoted(Check::issuerOf(certificate));
    const QString its = u"the certificate of %1 by %2, valid %3 to %4, "_s.arg(
        quoted(Check::subjectOf(certificate)), issuer, day(certificate.effectiveDate()),
        day(certificate.expiryDate()));
    switch (error.error()) {
    case QSslError::CertificateExpired:
        return {its + u"has expired"_s, u"Renew it, and let the web server load the new one."_s};
    case QSslError::CertificateNotYetValid:
        return {its + u"is not valid yet"_s, u"Wait, or correct the clock of this machine."_s};
    case QSslError::HostNameMismatch:
        return {its + u"is for %1, not for %2"_s.arg(hostsOf(certificate), quoted(host)),
                u"Serve a certificate for the address that the app uses."_s};
    case QSslError::SelfSignedCertificate:
    case QSslError::SelfSignedCertificateInChain:
        return {its + u"is signed by itself, and not trusted by this machine"_s,
                u"Serve a certificate of an authority that phones trust, for example Let's Encrypt."_s};
    case QSslError::UnableToGetIssuerCertificate:
    case QSslError::UnableToGetLocalIssuerCertificate:
    case QSslError::UnableToVerifyFirstCertificate:
        return {
            its + u"lacks the certificate of its issuer %1"_s.arg(issuer),
            u"The server does not send it, and this machine does not know it: append it to the server's certificate "
            "file (certbot: fullchain.pem)."_s};
    case QSslError::UnspecifiedError:
        return {its + weaknessOf(certificate),
                u"Serve a certificate with an RSA key of 2048 bits or more, or an EC key, signed with SHA-256."_s};
    default:
        return {its + u"is refused: "_s + error.errorString(),
                u"Serve a certificate for this server, with its intermediate certificates."_s};
    }
}

} // namespace

QString Check::subjectOf(const QSslCertificate &certificate)
{
    const QStringList names = certificate.subjectInfo(QSslCertificate::CommonName);
    return names.isEmpty() ? nameOf(certificate.subjectAlternativeNames().values(QSsl::DnsEntry), {}) : names[0];
}

QString Check::issuerOf(const QSslCertificate &certificate)
{
    return nameOf(certificate.issuerInfo(QSslCertificate::CommonName),
                  certificate.issuerInfo(QSslCertificate::Organization));
}

QList<std::pair<QString, QString>> Check::whyRefused(const QList<QSslError> &errors, const QString &host)
{
    QList<Refusal> refusals;
    for (const QSslError &error : errors) {
        const Refusal refusal = refusalFor(error, host);
        // "Untrusted" only repeats that the chain could not be verified.
        const bool repeats = error.error() == QSslError::CertificateUntrusted && errors.size() > 1;
        if (!repeats && !refusals.contains(refusal))
            refusals += refusal;
    }
    return refusals;
}
