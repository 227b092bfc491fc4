import QtQuick
import QtQuick.Templates as T
import Marovenda.Ui

// The base of the text field and the password field. The screen owns the string: bind `content` to it, and assign it in
// `onEdited`. The string always equals the text on display, including text that an input method is still composing.
T.TextField {
    id: field

    required property string hint
    property string content
    property real radius: 16
    property color fill: Theme.white
    property color outline: Theme.outline
    property real outlineWidth: 1
    property TextStyle textStyle: Theme.body
    readonly property bool keyboardFocus: activeFocus
        && (focusReason === Qt.TabFocusReason || focusReason === Qt.BacktabFocusReason)
    // True while a popup has the focus. The popup returns the focus, and the caret keeps its place.
    property bool interrupted
    property bool updating

    // The customer changed the text: by key, paste, input method or assistive technology.
    signal edited(shown: string)

    function showContent() {
        if (shownText() === content)
            return
        updating = true
        text = content
        updating = false
    }
    function reportEdit() {
        const shown = shownText()
        if (!updating && shown !== content)
            edited(shown)
    }
    // A function and not a binding: `text` and `preeditText` change one after the other.
    function shownText(): string {
        return text.slice(0, cursorPosition) + preeditText + text.slice(cursorPosition)
    }

    implicitWidth: 200
    implicitHeight: field.textStyle.line + topPadding + bottomPadding
    padding: Theme.padding
    color: Theme.primaryText
    font.family: Theme.face
    font.pixelSize: field.textStyle.size
    verticalAlignment: Text.AlignVCenter
    selectionColor: Theme.blue
    selectedTextColor: Theme.white
    renderType: Text.NativeRendering
    // The default, 32767, would cut long texts (https://doc.qt.io/qt-6/qml-qtquick-textinput.html).
    maximumLength: 0x7fffffff

    containmentMask: TouchTarget { control: field }

    onContentChanged: showContent()
    onPreeditTextChanged: reportEdit()
    onTextChanged: {
        reportEdit()
        // Without the focus, a text longer than the field shows its beginning.
        if (!activeFocus)
            cursorPosition = 0
    }
    onActiveFocusChanged: {
        if (focusReason === Qt.ActiveWindowFocusReason)
            return
        if (!activeFocus) {
            // Not every input method commits its text when the focus leaves.
            UnfinishedText.commitIn(field)
            interrupted = focusReason === Qt.PopupFocusReason
            if (!interrupted)
                cursorPosition = 0
        } else if (interrupted) {
            interrupted = false
        } else if (focusReason !== Qt.MouseFocusReason) {
            cursorPosition = length
        }
    }

    background: ContinuousRectangle {
        radius: field.radius
        color: field.fill
        borderColor: field.outline
        borderWidth: field.outline.a > 0 ? field.outlineWidth : 0
    }

    Accessible.role: Accessible.EditableText
    Accessible.name: field.hint
    Accessible.ignored: !field.enabled

    AppText {
        x: field.leftPadding
        width: field.width - field.leftPadding - field.rightPadding
        height: field.height
        visible: field.length === 0 && field.preeditText === ""
        text: field.hint
        textStyle: field.textStyle
        color: Theme.placeholder
        verticalAlignment: Text.AlignVCenter
        wrapMode: Text.NoWrap
        elide: Text.ElideRight
        // At large text sizes the hint shrinks instead of being cut.
        lineHeightMode: Text.ProportionalHeight
        lineHeight: 1
        fontSizeMode: Text.HorizontalFit
        minimumPixelSize: Math.min(field.textStyle.size, 13)
        partOfControl: true
    }

    FocusRing {
        shown: field.keyboardFocus
        radius: field.radius + margin
    }
}
