pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Templates as T
import Marovenda.Ui

// A choice of one among few, side by side. The choice belongs to the screen: bind `selection` and write it back in
// `onChosen`. It is one stop of the Tab key; the arrow keys change the choice.
T.Control {
    id: picker

    required property string label
    required property var options
    required property string selection
    readonly property int current: picker.options.indexOf(picker.selection)

    signal chosen(option: string)

    function move(step: int) {
        const next = picker.current + step
        if (next >= 0 && next < picker.options.length)
            picker.chosen(picker.options[next])
    }

    implicitHeight: Math.max(32, Theme.footnote.line + 14)
    implicitWidth: 200
    focusPolicy: Qt.StrongFocus
    Keys.onLeftPressed: picker.move(-1)
    Keys.onUpPressed: picker.move(-1)
    Keys.onRightPressed: picker.move(1)
    Keys.onDownPressed: picker.move(1)

    Accessible.role: Accessible.Grouping
    Accessible.name: picker.label
    Accessible.ignored: !picker.enabled

    background: ContinuousRectangle {
        radius: 9
        color: Theme.track
    }
    contentItem: Item {
        id: track
        readonly property real share: width / Math.max(1, picker.options.length)

        // The thumb with its soft shadow.
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
            Repeater {
                model: 3
                ContinuousRectangle {
                    required property int index
                    anchors.fill: parent
                    anchors.margins: -index
                    anchors.topMargin: 2 - index
                    anchors.bottomMargin: -2 - index
                    radius: 7 + index
                    color: Qt.rgba(0, 0, 0, 0.035)
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
                model: picker.options
                Item {
                    id: segment
                    required property string modelData
                    readonly property bool selected: segment.modelData === picker.selection

                    function choose() {
                        UnfinishedText.commit()
                        picker.chosen(segment.modelData)
                    }

                    width: track.share
                    height: track.height
                    opacity: tap.pressed && !segment.selected ? Theme.pressedOpacity : 1

                    Accessible.role: Accessible.RadioButton
                    Accessible.name: segment.modelData
                    Accessible.checkable: true
                    Accessible.checked: segment.selected
                    Accessible.ignored: !segment.enabled
                    Accessible.onPressAction: segment.choose()
                    Accessible.onToggleAction: segment.choose()

                    TapHandler {
                        id: tap
                        margin: Math.max(0, (Theme.touchTarget - picker.height) / 2)
                        onTapped: {
                            picker.forceActiveFocus(Qt.MouseFocusReason)
                            segment.choose()
                        }
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
        shown: picker.visualFocus
        radius: 9 + around
    }
}
