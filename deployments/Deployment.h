#pragma once

#include <QString>

/// The fixed values of a build, exactly as the deployment file contains them. CMake checks them when it configures
/// the build. Tests link their own implementation.
namespace Deployment {

/// The base address of the service's endpoints; ends in "/".
QString baseUrl();
/// The address of the public tracking page, to which a tracking number is appended; ends in "/".
QString trackingUrl();
/// The e-mail address of the company's support.
QString supportEmail();

QString warehouseStreet();
QString warehouseCity();
/// Five digits, a hyphen and four digits.
QString warehouseZip();
/// In international form.
QString warehousePhone();

/// The address of the developer's web site, and the text of the link to it.
QString developerSite();
QString developerSiteText();
/// The developer's e-mail address, without "mailto:".
QString developerEmail();

} // namespace Deployment
