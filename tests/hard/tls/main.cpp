// What a connection must be before one byte of a request goes over it: tls-check quick|long

#include "Handshakes.h"
#include "TestDeployment.h"
#include "Trial.h"

#include <QCoreApplication>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QTemporaryDir>

#include <cstdlib>

namespace {

void makeCertificates(const QString &folder)
{
    const QString program = QStringLiteral(MAROVENDA_TLS_CERTIFICATES);
    if (QProcess::execute(QStringLiteral("/usr/bin/python3"), {QStringLiteral("-B"), program, folder}) != 0)
        qFatal("The certificates cannot be made.");
    // What the check's own root signs is trusted in this process only.
    QSslConfiguration trusting = QSslConfiguration::defaultConfiguration();
    if (!trusting.addCaCertificates(folder + QStringLiteral("/root.crt")))
        qFatal("There is no root to trust.");
    QSslConfiguration::setDefaultConfiguration(trusting);
}

/// The faults of any connection, over an encrypted one.
void tryFaults(Tally &tally, Wire &wire, bool isLong)
{
    wire.encrypt({{QStringLiteral("certificate"), QStringLiteral("good")}});
    Trial trial(tally, wire, "encrypted: ");
    QList<Faults::Fault> all = Faults::connections() + Faults::lengths() + Faults::sizes();
    if (isLong)
        all += Faults::chunks() + Faults::packings() + Faults::heads();
    all += Faults::endings(Calls::all()[0].reply("try 1"), 0, isLong ? 1 : 41);
    std::size_t turn = 0;
    for (const Faults::Fault &fault : all) {
        // Over an encrypted connection the first bytes are no request yet; the handshakes above are broken off there.
        if (fault.when == When::Door && fault.posts == Faults::Posts::One)
            continue;
        // A reply of its own stands for that call only.
        const std::size_t call = fault.body.isEmpty() ? turn++ % Calls::count : 0;
        if (Calls::all()[call].isPost() || !fault.isLarge())
            trial.run(fault, call);
    }
    trial.finish();
}

} // namespace

int main(int argc, char *argv[])
{
    for (const char *name : {"http_proxy", "https_proxy", "all_proxy", "no_proxy"})
        qunsetenv(name);
    const QCoreApplication app(argc, argv);
    const QString form = QCoreApplication::arguments().last();
    if (form != u"quick" && form != u"long")
        return EXIT_FAILURE;
    const bool isLong = form == u"long";

    const QTemporaryDir certificates;
    makeCertificates(certificates.path());
    Wire wire(certificates.path());
    TestDeployment::values().baseUrl = QStringLiteral("https://localhost:%1/").arg(wire.port());

    Tally tally;
    Handshakes handshakes(tally, wire);
    handshakes.tryCertificates(isLong);
    handshakes.tryBrokenOff(isLong ? 1 : 150);
    isLong ? handshakes.tryStalled() : handshakes.tryStalledShortly();
    tryFaults(tally, wire, isLong);
    return tally.finish();
}
