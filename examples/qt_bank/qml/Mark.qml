import QtQuick

// The bank's mark: two peaks over still water.
Rectangle {
    id: mark

    property color lines: Theme.accentText

    implicitWidth: 32
    implicitHeight: 32
    radius: 8
    color: Theme.accent
    clip: true

    Repeater {
        model: [[7, 13], [14, 10]]

        Rectangle {
            required property var modelData
            x: modelData[0]
            y: 10
            width: modelData[1]
            height: modelData[1]
            transform: [
                Rotation { origin.x: modelData[1] / 2; origin.y: modelData[1] / 2; angle: 45 }
            ]
            color: mark.lines
            antialiasing: true
        }
    }
    Rectangle {
        y: 18
        width: parent.width
        height: 14
        radius: 8
        color: mark.color
    }
    Rectangle {
        x: 7
        y: 21
        width: 18
        height: 3
        radius: 1.5
        color: mark.lines
    }
}
