#pragma once

#include "TestScreen.h"

#include <QJsonObject>

/// In what a screen differs from what the design says of it; empty when in nothing.
///
/// A table has an object for each element, which is named by its object name, or else by the text that it shows,
/// below another one with a slash between them. The object has a value for each rule of Rules.cpp, mostly a list.
/// Lengths are in logical pixels, between what is drawn: the padding of a text belongs to the distance to its
/// neighbour. A colour is its name, with an opacity after it where it is translucent.
QStringList differences(const TestScreen &screen, const QJsonObject &table);
