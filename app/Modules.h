#pragma once

#include <QQmlEngine>
#include <QQmlExtensionPlugin>

// Included once by an executable: makes the app's statically linked QML modules known to its engines.
Q_IMPORT_QML_PLUGIN(Marovenda_AppPlugin)
Q_IMPORT_QML_PLUGIN(Marovenda_AccountPlugin)
Q_IMPORT_QML_PLUGIN(Marovenda_LogisticsPlugin)
Q_IMPORT_QML_PLUGIN(Marovenda_UiPlugin)

/// Where the modules are found.
inline void addModules(QQmlEngine &engine) { engine.addImportPath(QStringLiteral("qrc:/")); }
