#pragma once

#include "Rules.h"

/// The height of a navigation bar.
inline constexpr qreal bar = 44;

/// A field of a form between the paddings of its screen.
inline QList<Rule> field(const QString &above, qreal distance, qreal side = 24)
{
    using namespace look;
    return {below(above, distance), left(side), right(side), height(54), shape(16, white, true)};
}

/// A form's button, full width.
inline QList<Rule> mainButton(const QString &above, qreal distance,
                              const QString &style = QStringLiteral("body bold"), qreal side = 24)
{
    using namespace look;
    return {below(above, distance), left(side),         right(side),  height(54),
            shape(20, blue),        text(style, white), centredText()};
}

/// What the design says of a scene of the pictures, at 390 x 844.
struct SceneTable {
    QByteArray scene;
    Table table;
};

QList<SceneTable> accountTables();
QList<SceneTable> logisticsTables();
