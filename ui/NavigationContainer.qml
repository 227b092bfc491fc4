import QtQuick
import Marovenda.Ui

// A stack of screens that shows the top one. A new screen slides in from the right and slides out again to go back. The
// customer goes back with a control of the screen, with Escape, Alt+Left or the Back key, or by dragging from the left
// edge.
FocusScope {
    id: container

    required property Component root
    readonly property int depth: pages.length
    readonly property AppScreen current: depth > 0 ? pages[depth - 1] : null
    readonly property bool moving: animation.running || edge.active

    // From the bottom of the stack to the top.
    property var pages: []
    // The position of the top screen: 0 is outside at the right, 1 is in place.
    property real progress: 1
    property bool leaving
    readonly property real pixelRatio: Screen.devicePixelRatio

    function push(component: Component) {
        completeSlide()
        const page = component.createObject(stage, { canGoBack: depth > 0 }) as AppScreen
        if (!page)
            return
        page.push.connect(container.push)
        page.back.connect(container.pop)
        pages = pages.concat([page])
        if (depth > 1 && Theme.pushDuration > 0) {
            progress = 0
            slideTo(1, Theme.pushDuration)
        } else {
            progress = 1
        }
        arrange()
        page.forceActiveFocus()
        page.appeared()
    }

    // Goes back to the screen below, which appears when the slide starts. Does nothing while the top screen is dragged.
    function pop() {
        if (depth < 2 || leaving || edge.active)
            return
        completeSlide()
        leaving = true
        pages[depth - 2].appeared()
        slideTo(0, Theme.pushDuration)
        arrange()
    }

    function slideTo(end: real, duration: int) {
        animation.from = progress
        animation.to = end
        animation.duration = Math.max(1, duration * Math.abs(end - progress))
        animation.restart()
        if (duration === 0)
            animation.complete()
    }

    function completeSlide() {
        if (animation.running)
            animation.complete()
    }

    function endTransition() {
        if (progress < 0.5 && depth > 1) {
            const popped = current
            pages = pages.slice(0, -1)
            progress = 1
            popped.visible = false
            popped.destroy()
            leaving = false
            arrange()
            current.forceActiveFocus()
            if (swipe.popping) {
                swipe.popping = false
                current.appeared()
            }
        } else {
            progress = 1
            swipe.popping = false
            arrange()
        }
    }

    // Places the two topmost screens and hides the others. Only the top screen takes input; screen readers see it alone
    // once the slide has ended.
    function arrange() {
        const last = depth - 1
        for (let i = 0; i <= last; ++i) {
            const page = pages[i]
            const below = i === last - 1
            page.width = container.width
            page.height = container.height
            page.z = i
            page.visible = i === last || (below && progress < 1)
            page.enabled = i === last && !leaving
            const x = i === last ? (1 - progress) * width : below ? -0.3 * width * progress : 0
            // Between pixels, Qt's software renderer draws each picture anew, and blurs it.
            page.x = Math.round(x * pixelRatio) / pixelRatio
        }
    }

    onProgressChanged: arrange()
    onWidthChanged: arrange()
    onHeightChanged: arrange()
    Component.onCompleted: push(root)

    Keys.onPressed: event => {
        const back = event.key === Qt.Key_Escape || event.key === Qt.Key_Back
            || (event.key === Qt.Key_Left && (event.modifiers & Qt.AltModifier))
        if (back && depth > 1) {
            event.accepted = true
            // A key held down is one press.
            if (!event.isAutoRepeat)
                pop()
        }
    }

    NumberAnimation {
        id: animation
        target: container
        property: "progress"
        easing.type: Easing.BezierSpline
        easing.bezierCurve: Theme.easeOut
        onFinished: container.endTransition()
    }

    Item {
        id: stage
        anchors.fill: parent
        clip: true

        // Dims the lower screen while the upper one moves.
        Rectangle {
            objectName: "dimming"
            anchors.fill: parent
            visible: container.progress < 1
            z: container.depth - 1.5
            color: "black"
            opacity: 0.1 * container.progress
        }
    }

    CopiedNotice { z: 1 }
    Item {
        id: swipe
        property bool popping

        width: 20
        height: parent.height
        enabled: container.depth > 1 && !animation.running && container.current && container.current.enabled && !container.current.covered

        DragHandler {
            id: edge
            target: null
            xAxis.enabled: true
            yAxis.enabled: false
            dragThreshold: 8
            onActiveTranslationChanged: {
                if (active)
                    container.progress = 1 - Math.max(0, Math.min(1, activeTranslation.x / container.width))
            }
            onActiveChanged: {
                if (active)
                    return
                const flick = centroid.velocity.x > 500
                const pops = container.progress < 0.5 || (flick && container.progress < 1)
                swipe.popping = pops
                container.leaving = pops
                container.slideTo(pops ? 0 : 1, Theme.pushDuration)
            }
        }
    }
}
