#pragma once

#include "Device.h"
#include "Model.h"

#include <functional>

/// One thing that a customer, or the service, may do now: what it does to the app and what the model makes of it.
struct Action {
    QString what;
    std::function<void(Device &)> act;
    std::function<void(Model &)> predict;
};

/// All that may be done in the model's state. `choice` picks the texts and the replies.
QList<Action> actions(const Model &model, quint32 choice);
