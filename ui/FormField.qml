import QtQuick
import QtQuick.Templates as T
import Marovenda.Ui

// The look that the plain and the password field share. The string belongs to the screen: bind `content` to it and write it
// back in `onEdited`. It always is what the field shows, with the text that an input method has not finished yet.
T.TextField {
    id: field

    required property string hint
    property string content: ""
    property real radius: 16
    property color fill: Theme.white
    property color outline: Theme.outline
    property real outlineWidth: 1
    property TextStyle textStyle: Theme.body
    readonly property bool keyboardFocus: activeFocus
        && (focusReason === Qt.TabFocusReason || focusReason === Qt.BacktabFocusReason)
    // Something has opened over the field and gives the focus back; the caret stays where it is meanwhile.
    property bool interrupted: false
    property bool taking: false

    // By key, paste, input method or assistive technology: the field shows another text than `content`.
    signal edited(shown: string)

    function take() {
        if (shownText() === content)
            return
        taking = true
        text = content
        taking = false
    }
    function give() {
        const shown = shownText()
        if (!taking && shown !== content)
            edited(shown)
    }
    // Asked for when it is needed: the text and the unfinished text change one after the other.
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
    selectByMouse: true
    selectionColor: Theme.blue
    selectedTextColor: Theme.white
    renderType: Text.NativeRendering
    // The field takes whatever arrives; the default would cut it (https://doc.qt.io/qt-6/qml-qtquick-textinput.html).
    maximumLength: 0x7fffffff

    containmentMask: TouchTarget { control: field }

    onContentChanged: take()
    onPreeditTextChanged: give()
    onTextChanged: {
        give()
        // A text that is longer than its field shows its beginning until it is edited.
        if (!activeFocus)
            cursorPosition = 0
    }
    onActiveFocusChanged: {
        if (focusReason === Qt.ActiveWindowFocusReason)
            return
        if (!activeFocus) {
            // Not every input method finishes its text when the focus leaves.
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
        // At a large text size a hint is smaller rather than cut.
        lineHeightMode: Text.ProportionalHeight
        lineHeight: 1
        fontSizeMode: Text.HorizontalFit
        minimumPixelSize: Math.min(field.textStyle.size, 13)
        partOfControl: true
    }

    FocusRing {
        shown: field.keyboardFocus
        radius: field.radius + around
    }
}
