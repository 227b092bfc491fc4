#pragma once

#include <QQmlEngine>
#include <QQmlExtensionPlugin>

// The app's modules but for those of the screens, which then cannot be loaded.
Q_IMPORT_QML_PLUGIN(Marovenda_AppPlugin)
Q_IMPORT_QML_PLUGIN(Marovenda_UiPlugin)

inline void addModules(QQmlEngine &engine) { engine.addImportPath(QStringLiteral("qrc:/")); }
