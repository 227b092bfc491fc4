#include "Wire.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QJsonDocument>
#include <QTimer>

using namespace Qt::StringLiterals;

bool until(const std::function<bool()> &isSo, int seconds)
{
    const QDeadlineTimer deadline(seconds * 1000LL);
    QTimer wake;
    wake.start(1000);
    while (!isSo() && !deadline.hasExpired())
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
    return isSo();
}

Wire::Wire(const QString &certificates)
{
    m_server.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    QStringList arguments{u"-B"_s, QStringLiteral(MAROVENDA_WIRE_SERVER)};
    if (!certificates.isEmpty())
        arguments += certificates;
    m_server.start(u"/usr/bin/python3"_s, arguments);
    m_ports = line();
}

Wire::~Wire()
{
    // Its end of input is its end.
    m_server.closeWriteChannel();
    m_server.waitForFinished();
}

void Wire::script(const QByteArray &path, const Steps &steps, When when)
{
    ask("script", {{u"path"_s, QString::fromLatin1(path)},
                   {u"steps"_s, steps.steps},
                   {u"when"_s, when == When::Head ? u"head"_s : u"request"_s}});
}

bool Wire::arrival(const QByteArray &path, int times)
{
    return ask("arrival", {{u"path"_s, QString::fromLatin1(path)}, {u"times"_s, times}})[u"came"_s].toBool();
}

QJsonObject Wire::ask(const char *what, QJsonObject command)
{
    command[u"do"_s] = QLatin1String(what);
    m_server.write(QJsonDocument(command).toJson(QJsonDocument::Compact) + '\n');
    return line();
}

QJsonObject Wire::line()
{
    if (!until([this] { return m_server.canReadLine() || m_server.state() == QProcess::NotRunning; }) ||
        !m_server.canReadLine())
        qFatal("The scripted server does not answer.");
    return QJsonDocument::fromJson(m_server.readLine()).object();
}
