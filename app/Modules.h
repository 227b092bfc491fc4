#pragma once

#include <QQmlEngine>
#include <QQmlExtensionPlugin>

// Registers the app's statically linked QML modules. Include it in one source file of an executable.
Q_IMPORT_QML_PLUGIN(Marovenda_AppPlugin)
Q_IMPORT_QML_PLUGIN(Marovenda_AccountPlugin)
Q_IMPORT_QML_PLUGIN(Marovenda_LogisticsPlugin)
Q_IMPORT_QML_PLUGIN(Marovenda_UiPlugin)

/// Makes the modules available to the engine.
inline void addModules(QQmlEngine &engine) { engine.addImportPath(QStringLiteral("qrc:/")); }
