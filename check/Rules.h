#pragma once

#include "Findings.h"

#include "Records.h"

namespace Check {

// What the screens make of the values of a readable reply: where they fail on them, and where the customer sees
// something in their place.

enum class SignIn { Existing, New };

/// The reply to signing in or, as a new customer, registering. False when the service refuses, as it does for a wrong
/// password.
bool judgeLogin(const LoginResponse &reply, SignIn kind, Findings &findings);
void judgeListing(const DashboardResponse &reply, Findings &findings);
void judgeCasillero(const CasilleroResponse &reply, Findings &findings);
/// The reply to one of the forms. `messageShown` says whether the screen shows the service's message.
void judgeForm(const StandardResponse &reply, bool messageShown, Findings &findings);

} // namespace Check
