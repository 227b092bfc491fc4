pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Templates as T
import Marovenda.Ui

// Lets the customer choose one of a few options. The screen owns the choice: bind `selection` to it, and assign it in
// `onChosen`. Tab stops at the chosen segment only; the arrow keys change the choice.
T.Control {
    id: picker

    required property string label
    required property var options
    required property string selection
    readonly property int current: picker.options.indexOf(picker.selection)

    signal chosen(option: string)

    // A tap does not move the focus unless a segment has it. In that case the focus moves before the choice does, since
    // the focused segment must remain a tab stop.
    function choose(index: int, byTap: bool) {
        const option = picker.options[index]
        if (option === undefined)
            return
        UnfinishedText.commit()
        if (!byTap || picker.activeFocus)
            segments.itemAt(index).forceActiveFocus(Qt.OtherFocusReason)
        picker.chosen(option)
    }

    implicitHeight: Math.max(32, Theme.footnote.line + 14)
    implicitWidth: 200
    // Arrow keys with modifiers are not ours: Alt+Left goes back.
    Keys.onPressed: event => {
        const steps = { [Qt.Key_Left]: -1, [Qt.Key_Up]: -1, [Qt.Key_Right]: 1, [Qt.Key_Down]: 1 }
        const plain = (event.modifiers & ~Qt.KeypadModifier) === Qt.NoModifier
        event.accepted = plain && event.key in steps
        if (event.accepted)
            picker.choose(picker.current + steps[event.key], false)
    }

    Accessible.role: Accessible.Grouping
    Accessible.name: picker.label
    Accessible.ignored: !picker.enabled

    background: ContinuousRectangle {
        radius: 9
        color: Theme.track
    }
    contentItem: Item {
        id: track
        readonly property real share: width / picker.options.length

        Item {
            objectName: "thumb"
            visible: picker.current >= 0
            x: 2 + track.share * picker.current
            y: 2
            width: track.share - 4
            height: track.height - 4
            Behavior on x {
                enabled: picker.visible
                NumberAnimation {
                    duration: Theme.thumbDuration
                    easing.type: Easing.BezierSpline
                    easing.bezierCurve: Theme.easeOut
                }
            }
            // The soft shadow.
            Repeater {
                model: 3
                ContinuousRectangle {
                    required property int index
                    anchors.fill: parent
                    anchors.margins: -index
                    anchors.topMargin: 2 - index
                    anchors.bottomMargin: -2 - index
                    radius: 7 + index
                    color: Qt.alpha("black", 0.035)
                }
            }
            ContinuousRectangle {
                objectName: "face"
                anchors.fill: parent
                radius: 7
                color: Theme.white
            }
        }
        Row {
            anchors.fill: parent
            Repeater {
                id: segments
                model: picker.options
                Item {
                    id: segment
                    objectName: segment.modelData
                    required property int index
                    required property string modelData
                    readonly property bool selected: segment.modelData === picker.selection

                    activeFocusOnTab: segment.selected
                    containmentMask: TouchTarget { control: segment }
                    width: track.share
                    height: track.height
                    opacity: tap.pressed && !segment.selected ? Theme.pressedOpacity : 1

                    Accessible.role: Accessible.RadioButton
                    Accessible.name: segment.modelData
                    Accessible.checkable: true
                    Accessible.checked: segment.selected
                    Accessible.ignored: !segment.enabled
                    Accessible.onPressAction: picker.choose(segment.index, false)
                    Accessible.onToggleAction: picker.choose(segment.index, false)

                    TapHandler {
                        id: tap
                        onTapped: picker.choose(segment.index, true)
                    }
                    AppText {
                        anchors.fill: parent
                        text: segment.modelData
                        textStyle: Theme.footnote
                        font.weight: segment.selected ? Font.DemiBold : Font.Normal
                        horizontalAlignment: Text.AlignHCenter
                        verticalAlignment: Text.AlignVCenter
                        wrapMode: Text.NoWrap
                        elide: Text.ElideRight
                        partOfControl: true
                    }
                }
            }
        }
    }
    FocusRing {
        shown: Keyboard.navigating && segments.itemAt(picker.current)?.activeFocus === true
        radius: 9 + margin
    }
}
