import QtQuick

// A tick, or a bar across.
Item {
    id: sign

    property bool isDone: true
    readonly property color color: isDone ? Theme.accent : Theme.danger

    implicitWidth: 28
    implicitHeight: 28

    Repeater {
        // x, y, length, angle
        model: sign.isDone ? [[4, 14, 10, 45], [10, 20.5, 19, -48]] : [[5, 14, 18, 0]]

        Rectangle {
            required property var modelData
            x: modelData[0]
            y: modelData[1] - 1.5
            width: modelData[2]
            height: 3
            radius: 1.5
            color: sign.color
            antialiasing: true
            transformOrigin: Item.Left
            rotation: modelData[3]
        }
    }
}
