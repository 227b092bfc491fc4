import QtQuick
import Marovenda.Ui

// A count over its caption, as a link to the whole list.
Pressable {
    id: block

    required property int count
    required property string caption

    text: block.count + " " + block.caption
    // On the blue card.
    focusColor: Theme.white

    contentItem: Column {
        spacing: Theme.spacing
        AppText {
            text: block.count
            textStyle: Theme.largeTitle
            bold: true
            color: Theme.white
            partOfControl: true
        }
        AppText {
            text: block.caption
            color: Theme.white
            partOfControl: true
        }
    }
}
