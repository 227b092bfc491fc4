#include "Options.h"

#include "AddressRules.h"
#include "Deployment.h"
#include "Text.h"

#include <QCommandLineParser>
#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace {

using Check::Options;
using Check::quoted;

constexpr int longestTimeout = 3600;

struct Names {
    QCommandLineOption base{u"base"_s,
                            u"Check the service at this address, which uses https or is this machine's own, and ends "
                            "in \"/\". Default: %1"_s.arg(Deployment::baseUrl()),
                            u"URL"_s, Deployment::baseUrl()};
    QCommandLineOption passwordFile{
        u"password-file"_s, u"Read the password from this file, a single line; - means standard input."_s, u"FILE"_s};
    QCommandLineOption write{u"write"_s,
                             u"Also send a quotation, a vehicle request, the profile, a password recovery "
                             "and a registration, and list what was created."_s};
    QCommandLineOption largestPhoto{u"largest-photo"_s,
                                    u"With --write, also send a photo of the largest size, 64 MiB."_s};
    QCommandLineOption empty{u"empty"_s, u"The customer has no packages and no quotations."_s};
    QCommandLineOption newEmail{u"new-email"_s, u"With --write, register this address."_s, u"ADDRESS"_s};
    QCommandLineOption id{u"id"_s, u"Continue as customer N if the sign-in returns no number."_s, u"N"_s};
    QCommandLineOption timeout{u"timeout"_s, u"Abandon a request if no byte moves for this long; the app waits 60."_s,
                               u"SECONDS"_s, u"60"_s};
    QCommandLineOption json{u"json"_s, u"Print the report as JSON."_s};
    QCommandLineOption quiet{u"quiet"_s, u"Do not print the progress."_s};
    QCommandLineOption contract{u"contract"_s,
                                u"Print the app's requests and replies as an OpenAPI 3.1 description, and exit."_s};
    QCommandLineOption help{{u"h"_s, u"help"_s}, u"Print this help and exit."_s};
    QCommandLineOption version{{u"v"_s, u"version"_s}, u"Print the version and exit."_s};
};

std::optional<qint64> wholeNumber(const QString &text)
{
    bool good = false;
    const qint64 number = text.toLongLong(&good);
    return good && text == QString::number(number) ? std::optional(number) : std::nullopt;
}

QString readNumbers(const QCommandLineParser &parser, const Names &names, Options &to)
{
    const auto seconds = wholeNumber(parser.value(names.timeout));
    if (!seconds || *seconds < 1 || *seconds > longestTimeout)
        return u"--timeout must be 1 to %1 seconds, not %2."_s.arg(longestTimeout)
            .arg(quoted(parser.value(names.timeout)));
    to.order.silence = std::chrono::seconds(*seconds);
    if (!parser.isSet(names.id))
        return {};
    to.order.id = wholeNumber(parser.value(names.id));
    return to.order.id && *to.order.id != 0
               ? QString()
               : u"--id must be a customer's number, not %1."_s.arg(quoted(parser.value(names.id)));
}

QString readTexts(const QCommandLineParser &parser, const Names &names, Options &to)
{
    const QStringList arguments = parser.positionalArguments();
    if (arguments.isEmpty())
        return u"The e-mail of a test customer is missing; see --help."_s;
    if (arguments.size() > 1)
        return u"Unexpected argument %1; the password cannot be an argument."_s.arg(quoted(arguments[1]));
    to.order.email = arguments[0];
    if (to.order.email.trimmed().isEmpty())
        return u"The e-mail of the test customer is empty."_s;
    to.order.base = parser.value(names.base);
    if (const QString trouble = Check::troubleWithBase(to.order.base); !trouble.isEmpty())
        return u"--base %1: %2"_s.arg(quoted(to.order.base, 200), trouble);
    to.order.newEmail = parser.value(names.newEmail);
    if (parser.isSet(names.newEmail) && (!parser.isSet(names.write) || to.order.newEmail.trimmed().isEmpty()))
        return u"--new-email needs an address, and --write."_s;
    if (to.order.largestPhoto && !to.order.write)
        return u"--largest-photo needs --write."_s;
    if (parser.isSet(names.passwordFile)) {
        to.passwordFile = parser.value(names.passwordFile);
        if (to.passwordFile->isEmpty())
            return u"--password-file must name a file."_s;
    }
    return {};
}

} // namespace

QString Check::troubleWithBase(const QString &base)
{
    const QString bytes = QString::fromLatin1(base.toUtf8());
    const auto matches = [&bytes](const char *expression) {
        return QRegularExpression(QString::fromLatin1(expression)).match(bytes).hasMatch();
    };
    for (const auto &[reason, when, must] : Deployment::addressRules) {
        if (matches(when) && (*must == '\0' || !matches(must)))
            return u"it must %1, as in https://api.example/."_s.arg(QLatin1StringView(reason));
    }
    return {};
}

Options Check::readOptions(const QStringList &arguments)
{
    const Names names;
    QCommandLineParser parser;
    parser.setApplicationDescription(
        u"Sends the Marovenda app's requests to a service, as a test customer, and reports what the app would do "
        "with each reply. Reads the password from --password-file, from MAROVENDA_CHECK_PASSWORD or from the "
        "terminal.\n\n"
        "Exit status: 0 if every screen that was tried works, 1 if one fails, if a list of the customer is missing "
        "or empty (see --empty), or if a wrong password is accepted, 2 if the server is unreachable or does not "
        "sign the test customer in, or if the command line is wrong."_s);
    parser.addPositionalArgument(u"EMAIL"_s, u"The e-mail of a customer to test with."_s);
    parser.addOptions({names.base, names.passwordFile, names.write, names.largestPhoto, names.empty, names.newEmail,
                       names.id, names.timeout, names.json, names.quiet, names.contract, names.help, names.version});
    Options options;
    if (!parser.parse(arguments)) {
        options.error = parser.errorText();
        return options;
    }
    options.help = parser.helpText();
    options.json = parser.isSet(names.json);
    options.quiet = parser.isSet(names.quiet);
    options.order.write = parser.isSet(names.write);
    options.order.largestPhoto = parser.isSet(names.largestPhoto);
    options.order.empty = parser.isSet(names.empty);
    if (parser.isSet(names.help))
        options.wish = Options::Wish::Help;
    else if (parser.isSet(names.version))
        options.wish = Options::Wish::Version;
    else if (parser.isSet(names.contract))
        options.wish = Options::Wish::Contract;
    if (options.wish != Options::Wish::Check)
        return options;
    options.error = readNumbers(parser, names, options);
    if (options.error.isEmpty())
        options.error = readTexts(parser, names, options);
    return options;
}
