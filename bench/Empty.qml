import QtQuick

Window {
    width: 390
    height: 844
    visible: true
}
