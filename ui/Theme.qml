pragma Singleton
import QtQml
import QtQuick
import Marovenda.Ui

// The colours, text styles, sizes and easing curves that several components share.
QtObject {
    id: theme

    readonly property color blue: "#007AFF"
    readonly property color grey: "#8E8E93"
    readonly property color green: "#34C759"
    readonly property color red: "#FF3B30"
    readonly property color white: "#FFFFFF"
    readonly property color primaryText: "#000000"
    readonly property color placeholder: Qt.alpha("#3C3C43", 0.30)
    readonly property color separator: Qt.alpha("#3C3C43", 0.29)
    readonly property color outline: Qt.alpha(grey, 0.2)
    readonly property color greyFill: Qt.alpha(grey, 0.1)
    readonly property color track: Qt.alpha("#767680", 0.12)
    readonly property color blueFill: Qt.alpha(blue, 0.1)
    // Grey at 10 % over white.
    readonly property color screenBackground: Qt.tint("white", Qt.alpha(grey, 0.1))

    readonly property real pressedOpacity: 0.4
    readonly property real pressedFillOpacity: 0.8

    readonly property string face: "Inter"
    readonly property real textScale: PlatformSettings.textScale
    // Above this scale, layouts stack side-by-side items where that keeps words whole.
    readonly property bool largeText: textScale > 1.4
    readonly property bool reducedMotion: PlatformSettings.reducedMotion

    readonly property TextStyle largeTitle: TextStyle { size: 34 * theme.textScale; line: 41 * theme.textScale }
    readonly property TextStyle title: TextStyle { size: 28 * theme.textScale; line: 34 * theme.textScale }
    readonly property TextStyle title2: TextStyle { size: 22 * theme.textScale; line: 28 * theme.textScale }
    readonly property TextStyle headline: TextStyle { size: 17 * theme.textScale; line: 22 * theme.textScale; weight: Font.DemiBold }
    readonly property TextStyle body: TextStyle { size: 17 * theme.textScale; line: 22 * theme.textScale }
    readonly property TextStyle subheadline: TextStyle { size: 15 * theme.textScale; line: 20 * theme.textScale }
    readonly property TextStyle footnote: TextStyle { size: 13 * theme.textScale; line: 18 * theme.textScale }
    readonly property TextStyle caption: TextStyle { size: 12 * theme.textScale; line: 16 * theme.textScale }

    readonly property real padding: 16
    readonly property real spacing: 8
    readonly property real columnWidth: 600
    readonly property real touchTarget: 44
    readonly property real buttonRadius: 20
    readonly property real barHeight: 44

    // Cubic Bézier splines.
    readonly property var easeIn: [0.42, 0, 1, 1, 1, 1]
    readonly property var easeOut: [0, 0, 0.58, 1, 1, 1]

    readonly property int pushDuration: reducedMotion ? 0 : 350
    readonly property int alertDuration: reducedMotion ? 0 : 200
    readonly property int thumbDuration: reducedMotion ? 0 : 200
}
