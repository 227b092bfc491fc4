import QtQuick
import QtQuick.Shapes
import Marovenda.Ui

// Two hundred rounded rectangles, drawn in one of several ways.
Window {
    id: window

    property string way: "texture"

    width: 390
    height: 844
    visible: true

    Component {
        id: texture
        ContinuousRectangle {
            radius: 16
            borderColor: "#338E8E93"
            borderWidth: 1
        }
    }
    Component {
        id: shape
        Shape {
            id: outline
            layer.enabled: true
            layer.samples: 4
            ShapePath {
                strokeColor: "#338E8E93"
                startX: 24; startY: 0
                PathLine { x: outline.width - 24; y: 0 }
                PathCubic { x: outline.width; y: 24; control1X: outline.width - 8; control1Y: 0; control2X: outline.width; control2Y: 8 }
                PathLine { x: outline.width; y: outline.height - 24 }
                PathCubic { x: outline.width - 24; y: outline.height; control1X: outline.width; control1Y: outline.height - 8; control2X: outline.width - 8; control2Y: outline.height }
                PathLine { x: 24; y: outline.height }
                PathCubic { x: 0; y: outline.height - 24; control1X: 8; control1Y: outline.height; control2X: 0; control2Y: outline.height - 8 }
                PathLine { x: 0; y: 24 }
                PathCubic { x: 24; y: 0; control1X: 0; control1Y: 8; control2X: 8; control2Y: 0 }
            }
        }
    }
    Component {
        id: canvas
        Canvas {
            onPaint: {
                const context = getContext("2d")
                context.beginPath()
                context.moveTo(24, 0)
                context.lineTo(width - 24, 0)
                context.bezierCurveTo(width - 8, 0, width, 8, width, 24)
                context.lineTo(width, height - 24)
                context.bezierCurveTo(width, height - 8, width - 8, height, width - 24, height)
                context.lineTo(24, height)
                context.bezierCurveTo(8, height, 0, height - 8, 0, height - 24)
                context.lineTo(0, 24)
                context.bezierCurveTo(0, 8, 8, 0, 24, 0)
                context.fillStyle = "white"
                context.fill()
                context.strokeStyle = "#338E8E93"
                context.stroke()
            }
        }
    }
    Column {
        Repeater {
            model: 200
            Loader {
                width: 342
                height: 54
                // qmllint disable unqualified
                sourceComponent: window.way === "texture" ? texture : window.way === "shape" ? shape : canvas
                // qmllint enable unqualified
            }
        }
    }
}
