#pragma once

#include <QFont>
#include <QImage>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickView>
#include <QStringList>

#include <functional>
#include <memory>

/// The customer's text size, for as long as it lives.
class TextScale {
public:
    explicit TextScale(double scale);
    ~TextScale();
    TextScale(const TextScale &) = delete;
    TextScale &operator=(const TextScale &) = delete;

private:
    const QFont m_before;
};

/// A piece of QML in a window of its own, without a display, to be looked at and touched as a customer would.
class TestScreen {
public:
    /// Shows the component that `qml` describes; the app's modules can be imported in it.
    explicit TestScreen(const QByteArray &qml, QSize size = {390, 844});
    ~TestScreen();
    /// A container with this screen, which so comes on screen at once.
    static QByteArray alone(const QByteArray &view)
    {
        return "NavigationContainer { root: Component { " + view + " } }";
    }
    /// A container whose first screen has a button of the name "open" that pushes the screen that `next` describes.
    static QByteArray pushing(const QByteArray &next);

    QQuickItem *root() const { return m_view->rootObject(); }
    QQuickView &window() const { return *m_view; }
    QQmlEngine &engine() const { return *m_view->engine(); }

    /// The item of an object name below `from` (all of the screen when null); fails the test when there is none.
    QQuickItem *find(const QString &objectName, const QQuickItem *from = nullptr) const;
    /// What assistive technology finds on show under this name; null when there is nothing.
    QQuickItem *named(const QString &name) const;
    /// All names that assistive technology finds on show, top to bottom as the tree has them.
    QStringList names() const;
    /// What is heard of the item that has the focus; empty when that has no name.
    QString focusedName() const;
    /// The names of the next stops of the Tab key.
    QStringList tabStops(int count) const;
    /// Presses an item as assistive technology does.
    static void press(QQuickItem *item);
    /// The texts on show below an item, in the order of the tree.
    QStringList texts(const QQuickItem *from = nullptr) const;
    QList<QQuickItem *> all(const QString &objectName, const QQuickItem *from = nullptr) const;

    /// What a field or a line of text holds.
    QString text(const QString &objectName) const { return find(objectName)->property("text").toString(); }

    /// The view model of the layout that an item of this object name stands in.
    QObject *viewModelOf(const QString &objectName) const;

    /// Scrolls until an item is in view.
    void scrollTo(const QQuickItem *item) const;
    /// Moves the scroll areas around an item, whatever window it is in, so that it is in view.
    static void bringIntoView(const QQuickItem *item);
    /// A tap in the middle of an item, which is brought into view first.
    void tap(const QQuickItem *item) const;
    /// A tap and typing.
    void type(const QQuickItem *field, const QString &text) const;
    /// A tap on the button of an object name.
    void press(const QString &objectName) const { tap(find(objectName)); }
    /// A new text for a field, at once and with any characters, as an input method hands it over.
    void enter(const QString &objectName, const QString &text) const;
    void key(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) const;
    /// A key that stays down for three repeats; with releases in between, as X11 sends them, or without, as Wayland
    /// does. `whileDown` runs after the press and before the repeats.
    void hold(Qt::Key key, bool releasesBetween = true, const std::function<void()> &whileDown = {}) const;
    /// Text of an input method that is not finished yet, in place of what was unfinished before.
    static void compose(QQuickItem *field, const QString &text);
    /// A tap with a finger instead of the mouse.
    void touch(const QQuickItem *item) const;
    /// Where an item is, in the window.
    static QRectF box(const QQuickItem *item);
    /// What is drawn; the window need not be on a display.
    QImage picture() const;
    /// Whether the container that is the root shows its screen of this depth and nothing moves.
    bool settledAt(int depth) const;
    /// Waits until the layout has been brought up to date.
    void settle() const;

private:
    std::unique_ptr<QQuickView> m_view;
};
