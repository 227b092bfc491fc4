import QtQml
import QtQuick
import Marovenda.Ui

// A containment mask that extends a small control to the minimum touch size.
QtObject {
    required property Item control

    function contains(point: point): bool {
        const dx = Math.max(0, (Theme.touchTarget - control.width) / 2)
        const dy = Math.max(0, (Theme.touchTarget - control.height) / 2)
        return point.x >= -dx && point.x <= control.width + dx && point.y >= -dy && point.y <= control.height + dy
    }
}
