#include "Password.h"

#include "Text.h"

#include <QFile>
#include <QStringDecoder>

#include <csignal>
#include <cstdio>
#include <termios.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

using Check::Password;
using Check::quoted;

constexpr auto variable = "MAROVENDA_CHECK_PASSWORD";
constexpr qint64 longest = 4096;

Password fromBytes(QByteArray bytes, const QString &source)
{
    if (bytes.endsWith('\n'))
        bytes.chop(1);
    if (bytes.endsWith('\r'))
        bytes.chop(1);
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = decoder(bytes);
    if (bytes.isEmpty())
        return {{}, u"%1 contains no password."_s.arg(source)};
    if (bytes.size() > longest)
        return {{}, u"%1 contains more than %2 bytes; a password is one short line."_s.arg(source).arg(longest)};
    if (bytes.contains('\n') || bytes.contains('\0'))
        return {{}, u"%1 must contain the password in a single line."_s.arg(source)};
    if (decoder.hasError())
        return {{}, u"%1 is not in UTF-8."_s.arg(source)};
    return {text, {}};
}

Password fromFile(const QString &name)
{
    QFile file(name);
    const bool input = name == "-"_L1;
    const QString source = input ? u"Standard input"_s : u"The file %1"_s.arg(quoted(name));
    if (input ? !file.open(stdin, QFile::ReadOnly) : !file.open(QFile::ReadOnly))
        return {{}, u"The password file %1 cannot be read: %2."_s.arg(quoted(name), file.errorString())};
    const QByteArray bytes = file.read(longest + 3);
    if (file.error() != QFile::NoError)
        return {{}, u"The password file %1 cannot be read: %2."_s.arg(quoted(name), file.errorString())};
    return fromBytes(bytes, source);
}

termios restored;

/// Ctrl+C at the prompt must not leave the terminal without echo.
void restoreAndEnd(int signal)
{
    tcsetattr(STDIN_FILENO, TCSANOW, &restored);
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

Password fromTerminal(const QString &email)
{
    if (!isatty(STDIN_FILENO) || tcgetattr(STDIN_FILENO, &restored) != 0)
        return {{},
                u"There is no password: use --password-file FILE, set %1, or run this in a terminal."_s.arg(
                    QLatin1String(variable))};
    constexpr int endings[]{SIGINT, SIGTERM, SIGHUP, SIGQUIT};
    for (const int ending : endings)
        std::signal(ending, restoreAndEnd);
    termios silent = restored;
    silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    tcsetattr(STDIN_FILENO, TCSAFLUSH, &silent);
    std::fprintf(stderr, "Password of %s: ", qUtf8Printable(Check::harmless(email)));
    std::fflush(stderr);
    QFile input;
    QByteArray line;
    if (input.open(stdin, QFile::ReadOnly))
        line = input.readLine(longest + 3);
    tcsetattr(STDIN_FILENO, TCSANOW, &restored);
    for (const int ending : endings)
        std::signal(ending, SIG_DFL);
    std::fputc('\n', stderr);
    return fromBytes(line, u"The input"_s);
}

} // namespace

Password Check::findPassword(const std::optional<QString> &file, const QString &email)
{
    if (file)
        return fromFile(*file);
    if (qEnvironmentVariableIsSet(variable))
        return fromBytes(qgetenv(variable), QLatin1String(variable));
    return fromTerminal(email);
}
