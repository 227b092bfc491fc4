#pragma once

#include "TestScreen.h"

#include <functional>

/// What the design says of one element, as a function that says what differs; empty when nothing does.
using Rule = std::function<QString(const TestScreen &, const QQuickItem *element)>;

/// A line of a screen's table. The element is named by its object name, or else by the text that it shows, below
/// another one with a slash between them; no name is the window.
struct Line {
    QString element;
    QList<Rule> rules;
};

using Table = QList<Line>;

/// The element of a name; null when nothing on show has it.
QQuickItem *elementNamed(const TestScreen &screen, const QString &name);

namespace look {

/// Lengths in logical pixels, between what is drawn: the padding of a text belongs to the distance to its neighbour.
Rule size(qreal width, qreal height);
Rule height(qreal height);
/// Distances to the edges of the window.
Rule left(qreal distance);
Rule right(qreal distance);
Rule top(qreal distance);
Rule bottom(qreal distance);
/// Below another element, that far.
Rule below(const QString &other, qreal distance);
/// To the right of another element, that far.
Rule after(const QString &other, qreal distance);
/// Centred in the window from left to right.
Rule centred();
/// The middles of both stand at one height.
Rule level(const QString &other);
/// What is above `first` is as high as what is below this element, between `from` and the height `to`.
Rule balancedFrom(const QString &first, qreal from, qreal to);
/// Inside another element, that far from its edges where not negative.
Rule inside(const QString &other, qreal left, qreal top, qreal right, qreal bottom);

/// A text style by its name, "bold" after it where it is.
Rule text(const QString &style, const QColor &colour);
Rule centredText();
/// The outline that the element is drawn on.
Rule shape(qreal radius, const QColor &fill, bool outlined = false);
Rule symbol(const QString &name, const QColor &colour);
/// A plain rectangle or a line.
Rule colour(const QColor &colour);

inline const QColor blue(0x00, 0x7A, 0xFF);
inline const QColor grey(0x8E, 0x8E, 0x93);
inline const QColor green(0x34, 0xC7, 0x59);
inline const QColor red(0xFF, 0x3B, 0x30);
inline const QColor white(Qt::white);
inline const QColor black(Qt::black);
inline const QColor separator(0x3C, 0x3C, 0x43, 74);
inline QColor faint(QColor colour, double opacity)
{
    colour.setAlphaF(float(opacity));
    return colour;
}

} // namespace look
