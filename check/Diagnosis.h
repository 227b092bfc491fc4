#pragma once

#include "Exchange.h"
#include "Findings.h"
#include "Screens.h"

namespace Check {

/// What the company asks for.
struct Order {
    /// The address under which the endpoints are; ends in "/".
    QString base = {};
    QString email = {};
    QString password = {};
    /// Asked for when the sign-in gives no number.
    std::optional<qint64> id = {};
    /// Also send what changes something on the server.
    bool write = false;
    /// The address that registers; made from the customer's when empty.
    QString newEmail = {};
    std::chrono::milliseconds silence = HttpLimits().silence;
};

/// What came of it.
struct Diagnosis {
    Findings findings;
    QList<Screen> screens;
    QList<Exchange> exchanges;
    /// What was sent that may have left something on the server, a line each.
    QStringList created;
    /// False when the first exchange reached nobody.
    bool reached = true;
    /// The service does not let the test customer in, as with a wrong password.
    bool refused = false;

    bool works() const { return reached && !refused && findings.count(Severity::Fault) == 0; }
};

} // namespace Check
