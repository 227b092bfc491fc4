#pragma once

#include "Findings.h"

#include "Records.h"

namespace Check {

// Check the values of a readable reply: which ones make a screen fail, and for which ones the customer sees a
// fallback.

enum class SignIn { Existing, New };

/// Checks the reply to a sign-in or a registration. Returns false if the service refuses it, for example because of a
/// wrong password.
bool judgeLogin(const LoginResponse &reply, SignIn kind, Findings &findings);
/// `mayBeEmpty` tells whether the customer has nothing.
void judgeListing(const DashboardResponse &reply, bool mayBeEmpty, Findings &findings);
void judgeCasillero(const CasilleroResponse &reply, Findings &findings);
/// Checks the reply to a form. `messageShown` tells whether the screen shows the service's message.
void judgeForm(const StandardResponse &reply, bool messageShown, Findings &findings);

} // namespace Check
