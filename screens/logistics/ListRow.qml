import QtQuick
import Marovenda.Ui

// A row of a list screen: a text with a badge at its right, and a second text below. Screen readers read it as one
// element.
GroupedRow {
    id: row

    required property string headline
    required property string badge
    required property color badgeColor
    required property string detail
    required property string spoken

    Accessible.role: Accessible.ListItem
    Accessible.name: row.spoken
    Accessible.ignored: !row.enabled

    Column {
        width: parent.width
        topPadding: 4
        bottomPadding: 4
        spacing: 6

        Item {
            width: parent.width
            height: Theme.largeText ? headlineText.height + 6 + badgeText.height
                                    : Math.max(headlineText.height, badgeText.height)
            AppText {
                id: headlineText
                y: Theme.largeText ? 0 : (parent.height - height) / 2
                width: Theme.largeText ? parent.width : badgeText.x - Theme.spacing
                text: row.headline
                bold: true
                partOfControl: true
            }
            AppText {
                id: badgeText
                x: Theme.largeText ? 0 : parent.width - width
                y: Theme.largeText ? parent.height - height : (parent.height - height) / 2
                width: Math.min(implicitWidth, Theme.largeText ? parent.width : parent.width * 0.45)
                text: row.badge
                textStyle: Theme.caption
                bold: true
                color: row.badgeColor
                horizontalAlignment: Theme.largeText ? Text.AlignLeft : Text.AlignRight
                partOfControl: true
            }
        }
        AppText {
            width: parent.width
            text: row.detail
            textStyle: Theme.subheadline
            color: Theme.grey
            partOfControl: true
        }
    }
}
