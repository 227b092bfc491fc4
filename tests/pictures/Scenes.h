#pragma once

#include "ScriptedServer.h"
#include "TestScreen.h"

#include <functional>
#include <memory>

/// A screen in one of its states.
struct Scene {
    QByteArray name;
    QByteArray qml;
    /// What the service answers and what the session holds.
    std::function<void(ScriptedServer &)> given;
    /// What the customer does, up to the state to be shown. False when it did not come.
    std::function<bool(TestScreen &)> when;
};

/// All screens, each in the states that differ in their look.
QList<Scene> scenes();

/// The screen of the scene of a name, in its state; null when that did not come.
std::unique_ptr<TestScreen> staged(const QByteArray &name, ScriptedServer &server, QSize size = {390, 844});
