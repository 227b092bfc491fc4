import QtQuick
import Marovenda.Ui

// The title of a section with the link to all of it.
Item {
    id: section

    required property string title
    required property string link

    signal clicked()

    implicitHeight: Math.max(titleText.height, linkButton.height)

    AppText {
        id: titleText
        anchors.verticalCenter: parent.verticalCenter
        width: parent.width - linkButton.width - Theme.spacing
        text: section.title
        textStyle: Theme.headline
        Accessible.role: Accessible.Heading
    }
    TextButton {
        id: linkButton
        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        text: section.link
        onClicked: section.clicked()
    }
}
