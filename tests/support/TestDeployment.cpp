#include "TestDeployment.h"

#include "Deployment.h"

TestDeployment &TestDeployment::values()
{
    static TestDeployment values;
    return values;
}

namespace Deployment {

QString baseUrl() { return TestDeployment::values().baseUrl; }
QString trackingUrl() { return TestDeployment::values().trackingUrl; }
QString supportEmail() { return TestDeployment::values().supportEmail; }
QString warehouseStreet() { return TestDeployment::values().warehouseStreet; }
QString warehouseCity() { return TestDeployment::values().warehouseCity; }
QString warehouseZip() { return TestDeployment::values().warehouseZip; }
QString warehousePhone() { return TestDeployment::values().warehousePhone; }
QString developerSite() { return TestDeployment::values().developerSite; }
QString developerSiteText() { return TestDeployment::values().developerSiteText; }
QString developerEmail() { return TestDeployment::values().developerEmail; }

} // namespace Deployment
