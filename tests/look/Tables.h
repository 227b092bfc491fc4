#pragma once

#include "Rules.h"

/// What the design says of a scene of the pictures, at 390 x 844.
struct SceneTable {
    QByteArray scene;
    Table table;
};

QList<SceneTable> accountTables();
QList<SceneTable> logisticsTables();
