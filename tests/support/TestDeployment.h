#pragma once

#include <QString>

/// The values behind Deployment.h in a test. They start as those below; set what the test needs before the product
/// first asks for it (`ApiClient` asks for the base address once).
struct TestDeployment {
    QString baseUrl;
    QString trackingUrl = QStringLiteral("https://track.example/");
    QString supportEmail = QStringLiteral("soporte@marovenda.example");
    QString warehouseStreet = QStringLiteral("1 Test Way");
    QString warehouseCity = QStringLiteral("Miami");
    QString warehouseZip = QStringLiteral("33166-0001");
    QString warehousePhone = QStringLiteral("+1 305 555 0100");
    QString developerSite = QStringLiteral("https://corvandel.example/");
    QString developerSiteText = QStringLiteral("corvandel.example");
    QString developerEmail = QStringLiteral("hola@corvandel.example");

    static TestDeployment &values();
};
