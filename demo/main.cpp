#include "Seed.h"
#include "Service.h"
#include "Store.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include <csignal>
#include <cstdio>
#include <optional>

using namespace Qt::StringLiterals;

namespace {

constexpr int failureStatus = 1;
constexpr int usageStatus = 2;

struct Options {
    QCommandLineOption port{u"port"_s, u"Listen on this port of 127.0.0.1; 0 means any free port."_s, u"N"_s,
                            QString::number(MAROVENDA_DEMO_PORT)};
    QCommandLineOption database{u"database"_s, u"Store the data in this file."_s, u"FILE"_s,
                                u"marovenda-demo.sqlite"_s};
    QCommandLineOption reset{u"reset"_s, u"Delete the data of earlier runs and start with the demo customers."_s};
    QCommandLineOption customers{u"customers"_s, u"Print the demo customers and exit."_s};
    QCommandLineOption help{{u"h"_s, u"help"_s}, u"Print this help and exit."_s};
    QCommandLineOption version{{u"v"_s, u"version"_s}, u"Print the version and exit."_s};
};

int complain(const QString &line, int status)
{
    std::fprintf(stderr, "marovenda-demo-service: %s\n", qUtf8Printable(line));
    return status;
}

void print(const QString &text)
{
    std::fputs(qUtf8Printable(text), stdout);
    std::fflush(stdout);
}

void printCustomers()
{
    for (const DemoCustomer &customer : demoCustomers())
        print(u"%1  %2  (%3, %4 packages)\n"_s.arg(customer.email, -24)
                  .arg(customer.password, customer.nombre)
                  .arg(customer.paquetes.size()));
}

std::optional<quint16> portFrom(const QString &text)
{
    bool good = false;
    const ushort port = text.toUShort(&good);
    return good && text == QString::number(port) ? std::optional(port) : std::nullopt;
}

/// Serves until SIGTERM or SIGINT.
int serve(quint16 port, const QString &database, Store::Start start)
{
    // Block the signals in all threads, so that sigwait() receives them and no handler is necessary.
    sigset_t ending;
    sigemptyset(&ending);
    sigaddset(&ending, SIGTERM);
    sigaddset(&ending, SIGINT);
    pthread_sigmask(SIG_BLOCK, &ending, nullptr);

    Service service;
    // Bind the port before opening the store: a second service must not reset the data of the first.
    if (!service.bind(port))
        return complain(u"Port %1 of 127.0.0.1 is taken or not allowed; choose another with --port"_s.arg(port),
                        failureStatus);
    try {
        service.start(std::make_unique<Store>(database, start));
    } catch (const std::exception &failure) {
        return complain(QString::fromUtf8(failure.what()), failureStatus);
    }
    print(u"Listening on http://127.0.0.1:%1/\n"_s.arg(service.port()));
    int signal = 0;
    sigwait(&ending, &signal);
    service.stop();
    return 0;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(u"marovenda-demo-service"_s);
    QCoreApplication::setApplicationVersion(QStringLiteral(MAROVENDA_VERSION));

    const Options options;
    QCommandLineParser parser;
    parser.setApplicationDescription(
        u"Serves the Marovenda app on this machine, with demo customers. Do not use it on a network."_s);
    parser.addOptions(
        {options.port, options.database, options.reset, options.customers, options.help, options.version});
    if (!parser.parse(QCoreApplication::arguments()))
        return complain(parser.errorText(), usageStatus);
    if (!parser.positionalArguments().isEmpty())
        return complain(u"Unexpected argument '%1'."_s.arg(parser.positionalArguments().constFirst()), usageStatus);
    const auto port = portFrom(parser.value(options.port));
    if (!port)
        return complain(u"--port must be 0 to 65535, not '%1'."_s.arg(parser.value(options.port)), usageStatus);
    if (parser.value(options.database).isEmpty())
        return complain(u"--database must name a file."_s, usageStatus);

    if (parser.isSet(options.help)) {
        print(parser.helpText());
    } else if (parser.isSet(options.version)) {
        print(u"marovenda-demo-service "_s + QCoreApplication::applicationVersion() + u'\n');
    } else if (parser.isSet(options.customers)) {
        printCustomers();
    } else {
        return serve(*port, parser.value(options.database),
                     parser.isSet(options.reset) ? Store::Start::Reset : Store::Start::Keep);
    }
    return 0;
}
