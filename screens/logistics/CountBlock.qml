import QtQuick
import Marovenda.Ui

// A count above its caption, which links to the list.
Pressable {
    id: block

    required property int count
    required property string caption

    text: block.count + " " + block.caption
    // The block is on a blue card.
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
