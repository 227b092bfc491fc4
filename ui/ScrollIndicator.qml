import QtQuick

// A thin bar at the right of a scroll area, visible while the area moves.
Rectangle {
    id: indicator

    required property Flickable area

    parent: area
    z: 2
    visible: area.interactive && area.moving
    x: area.width - width - 3
    y: 2 + (area.height - 4) * Math.max(0, area.visibleArea.yPosition)
    width: 3
    height: Math.max(24, (area.height - 4) * area.visibleArea.heightRatio)
    radius: 1.5
    color: Qt.alpha("black", 0.35)
}
