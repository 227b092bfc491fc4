#pragma once

#include "Exchange.h"
#include "Findings.h"
#include "Screens.h"

namespace Check {

/// The parameters of a check.
struct Order {
    /// The base address of the endpoints; ends in "/".
    QString base = {};
    QString email = {};
    QString password = {};
    /// The customer's number to use if the sign-in returns none.
    std::optional<qint64> id = {};
    /// Whether to send requests that change the server's data.
    bool write = false;
    /// Whether the customer has no packages and no quotations.
    bool empty = false;
    /// With `write`, whether to send a photo of the largest size that the app accepts.
    bool largestPhoto = false;
    /// The address to register; derived from `email` if empty.
    QString newEmail = {};
    std::chrono::milliseconds silence = HttpLimits().silence;
};

/// The result of a check.
struct Diagnosis {
    Findings findings;
    QList<Screen> screens;
    QList<Exchange> exchanges;
    /// The data that may have been created on the server, one line each.
    QStringList created;
    /// False if the first request reached no server.
    bool reached = true;
    /// Whether the service refused the test customer, for example because of a wrong password.
    bool refused = false;

    bool works() const { return reached && !refused && findings.count(Severity::Fault) == 0; }
};

} // namespace Check
