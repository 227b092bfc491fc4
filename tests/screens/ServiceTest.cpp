#include "ServiceTest.h"

#include "Session.h"
#include "TestDeployment.h"

#include <QDesktopServices>
#include <QJsonDocument>
#include <QNetworkAccessManager>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const QStringList schemes{u"https"_s, u"http"_s, u"mailto"_s};

} // namespace

void ServiceTest::ignoreOpened()
{
    for (const QString &scheme : schemes)
        QDesktopServices::unsetUrlHandler(scheme);
}

qsizetype ServiceTest::exchangesInFlight()
{
    // Each has a manager of its own, and nothing else below the application has one.
    return QCoreApplication::instance()->findChildren<QNetworkAccessManager *>().size();
}

ServiceTest::ServiceTest() { TestDeployment::values().baseUrl = server.baseUrl(); }

void ServiceTest::init()
{
    server.clear();
    opened.clear();
    for (const QString &scheme : schemes)
        QDesktopServices::setUrlHandler(scheme, this, "noteOpened");
    Session &session = Session::instance();
    session.setUserId(0);
    session.setUserNombre({});
    session.setUserEmail({});
    session.setUserAvatarData({});
}

void ServiceTest::cleanup()
{
    ignoreOpened();
    // No exchange of this test may reach the server during the next.
    server.clear();
    QTRY_COMPARE(exchangesInFlight(), 0);
}

QList<QJsonObject> ServiceTest::sent(const QByteArray &path) const
{
    QList<QJsonObject> bodies;
    for (const auto &request : server.requests()) {
        if (request.path == path)
            bodies.append(QJsonDocument::fromJson(request.body).object());
    }
    return bodies;
}

void ServiceTest::waitForRequests(int count) const { QTRY_COMPARE(server.requests().size(), count); }
