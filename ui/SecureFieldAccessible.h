#pragma once

#include <QAccessibleObject>

class QQuickItem;

/// Presents a password field to assistive technology: with the role "password text", the field's hint as its name,
/// and a bullet for each character as its text. No call and no event reveals the clear text.
class SecureFieldAccessible final : public QAccessibleObject,
                                    public QAccessibleTextInterface,
                                    public QAccessibleEditableTextInterface,
                                    public QAccessibleActionInterface {
public:
    /// Installs this interface for all Qt Quick fields whose echo mode is not Normal. Call it after Qt Quick has been
    /// loaded; further calls do nothing.
    static void install();

    explicit SecureFieldAccessible(QQuickItem *field);

    QAccessibleInterface *parent() const override;
    QAccessibleInterface *child(int index) const override;
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface *child) const override;
    QString text(QAccessible::Text which) const override;
    void setText(QAccessible::Text which, const QString &text) override;
    QRect rect() const override;
    QAccessible::Role role() const override { return QAccessible::EditableText; }
    QAccessible::State state() const override;
    QWindow *window() const override;
    void *interface_cast(QAccessible::InterfaceType type) override;

    void selection(int index, int *start, int *end) const override;
    int selectionCount() const override;
    void addSelection(int start, int end) override;
    void removeSelection(int index) override;
    void setSelection(int index, int start, int end) override;
    int cursorPosition() const override;
    void setCursorPosition(int position) override;
    QString text(int start, int end) const override;
    int characterCount() const override;
    QRect characterRect(int offset) const override;
    int offsetAtPoint(const QPoint &point) const override;
    void scrollToSubstring(int start, int end) override;
    QString attributes(int offset, int *start, int *end) const override;

    // The default implementations would edit the text that `text` returns: bullets.
    void deleteText(int start, int end) override;
    void insertText(int offset, const QString &text) override;
    void replaceText(int start, int end, const QString &text) override;

    QStringList actionNames() const override;
    void doAction(const QString &name) override;
    QStringList keyBindingsForAction(const QString &name) const override;

private:
    QQuickItem *field() const;
    QRectF sceneRect() const;
};
