#pragma once

#include <QString>

/// The fixed values of a build. They are texts as the deployment file gives them; what they must look like is
/// checked when configuring. The tests link a definition of their own.
namespace Deployment {

/// Address under which all endpoint files of the service sit; ends in "/".
QString baseUrl();
/// Address of the public tracking page, to which a tracking number is appended; ends in "/".
QString trackingUrl();
/// The company's address for support.
QString supportEmail();

QString warehouseStreet();
QString warehouseCity();
/// Five digits, a hyphen and four digits.
QString warehouseZip();
/// In international form.
QString warehousePhone();

/// The developer's web site: its address, and the text that stands for it.
QString developerSite();
QString developerSiteText();
/// The developer's bare mail address.
QString developerEmail();

} // namespace Deployment
