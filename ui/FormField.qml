import QtQuick
import QtQuick.Templates as T
import Marovenda.Ui

// The look that the plain and the password field share. The text belongs to the screen: bind `text` to it and write it
// back in `onTextEdited`.
T.TextField {
    id: field

    required property string hint
    property real radius: 16
    property color fill: Theme.white
    property color outline: Theme.outline
    property TextStyle textStyle: Theme.body
    readonly property bool keyboardFocus: activeFocus
        && (focusReason === Qt.TabFocusReason || focusReason === Qt.BacktabFocusReason)

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

    containmentMask: TouchTarget { control: field }

    // A text that is longer than its field shows its beginning until it is edited.
    onTextChanged: if (!activeFocus) cursorPosition = 0
    onActiveFocusChanged: {
        if (focusReason === Qt.ActiveWindowFocusReason)
            return
        if (!activeFocus)
            cursorPosition = 0
        else if (focusReason !== Qt.MouseFocusReason)
            cursorPosition = length
    }

    background: ContinuousRectangle {
        radius: field.radius
        color: field.fill
        borderColor: field.outline
        borderWidth: field.outline.a > 0 ? 1 : 0
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
