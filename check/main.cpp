#include "Contract.h"
#include "Deployment.h"
#include "Options.h"
#include "Password.h"
#include "Report.h"
#include "Text.h"
#include "Visit.h"

#include <QCoreApplication>

#include <cstdio>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

enum ExitStatus { Works = 0, Fails = 1, Unusable = 2 };

int printError(const QString &line)
{
    std::fprintf(stderr, "marovenda-check: %s\n", qUtf8Printable(Check::harmless(line)));
    return Unusable;
}

/// Returns false if the text could not be written completely, for example to a full disk or a closed pipe.
bool print(const QByteArray &text)
{
    return std::fwrite(text.constData(), 1, static_cast<std::size_t>(text.size()), stdout) ==
               static_cast<std::size_t>(text.size()) &&
           std::fflush(stdout) == 0;
}

/// See https://no-color.org for the variable.
bool wantsColours()
{
    return isatty(STDOUT_FILENO) && qEnvironmentVariableIsEmpty("NO_COLOR") && qgetenv("TERM") != "dumb";
}

int check(const Check::Options &options)
{
    const auto progress = [&](const QString &endpoint) {
        if (!options.quiet)
            std::fprintf(stderr, "Asking %s ...\n", qUtf8Printable(endpoint));
    };
    const Check::Diagnosis diagnosis = Check::Visit(options.order, progress).run();
    const QByteArray report = options.json ? Check::jsonReport(options.order, diagnosis)
                                           : Check::textReport(options.order, diagnosis, wantsColours()).toUtf8();
    if (!print(report))
        return printError(u"The report could not be written."_s);
    if (diagnosis.works())
        return Works;
    return diagnosis.reached && diagnosis.findings.count(Check::Severity::Fault) > 0 ? Fails : Unusable;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(u"marovenda-check"_s);
    QCoreApplication::setApplicationVersion(QStringLiteral(MAROVENDA_VERSION));

    Check::Options options = Check::readOptions(QCoreApplication::arguments());
    if (!options.error.isEmpty())
        return printError(options.error);
    if (options.wish == Check::Options::Wish::Help)
        return print(options.help.toUtf8()) ? Works : Unusable;
    if (options.wish == Check::Options::Wish::Version)
        return print("marovenda-check " MAROVENDA_VERSION "\n") ? Works : Unusable;

    if (options.wish == Check::Options::Wish::Contract)
        return print(Check::contract(QCoreApplication::applicationVersion(), Deployment::baseUrl())) ? Works
                                                                                                     : Unusable;

    const Check::Password password = Check::findPassword(options.passwordFile, options.order.email);
    if (!password.text)
        return printError(password.error);
    options.order.password = *password.text;
    return check(options);
}
