import QtQuick
import Marovenda.Ui

// The title of a section and the link to the whole list, side by side if they fit, otherwise one below the other.
Item {
    id: section

    required property string title
    required property string link
    readonly property bool stacked: titleText.implicitWidth + Theme.spacing + linkButton.width > width

    signal clicked()

    implicitHeight: stacked ? titleText.height + Theme.spacing + linkButton.height
                            : Math.max(titleText.height, linkButton.height)

    AppText {
        id: titleText
        width: section.stacked ? section.width : section.width - linkButton.width - Theme.spacing
        text: section.title
        textStyle: Theme.headline
        Accessible.role: Accessible.Heading
    }
    TextButton {
        id: linkButton
        x: section.stacked ? 0 : section.width - width
        y: section.height - height
        text: section.link
        onClicked: section.clicked()
    }
}
