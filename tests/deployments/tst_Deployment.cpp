#include "Deployment.h"

#include <QTest>

using namespace Qt::StringLiterals;

class DeploymentTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void valuesAreThoseOfTheFile()
    {
        QCOMPARE(Deployment::baseUrl(), u"https://service.example/app/v1/"_s);
        QCOMPARE(Deployment::trackingUrl(), u"https://track.example/t/"_s);
        QCOMPARE(Deployment::supportEmail(), u"soporte@marovenda.example"_s);
        QCOMPARE(Deployment::warehouseStreet(), u"8 \"Ñandú\" Way; C:\\suite %1 @FOO@ ${BAR} ?"_s);
        QCOMPARE(Deployment::warehouseCity(), u"Miami \?\?/ (Doral)"_s);
        QCOMPARE(Deployment::warehouseZip(), u"33166-0012"_s);
        QCOMPARE(Deployment::warehousePhone(), u"+1 305 555 0142"_s);
        QCOMPARE(Deployment::developerSite(), u"not a URL"_s);
        QCOMPARE(Deployment::developerSiteText(), u"corvandel.example"_s);
        QCOMPARE(Deployment::developerEmail(), u"hola@corvandel.example"_s);
    }
};

QTEST_GUILESS_MAIN(DeploymentTest)
#include "tst_Deployment.moc"
