import QtQuick

// Erases or leads back; drawn, so that no font must have it.
Item {
    id: sign

    property color color: Theme.ink

    implicitWidth: 24
    implicitHeight: 16

    Rectangle {
        anchors.verticalCenter: parent.verticalCenter
        width: parent.width
        height: 2
        color: sign.color
    }
    Repeater {
        model: [-45, 45]

        Rectangle {
            required property int modelData
            x: 0
            y: sign.height / 2 - 1
            width: 11
            height: 2
            color: sign.color
            antialiasing: true
            transformOrigin: Item.Left
            rotation: modelData
        }
    }
}
