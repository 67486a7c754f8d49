import QtQuick

Row {
    id: dots

    property color color: Theme.accent

    spacing: Theme.step
    Accessible.role: Accessible.Animation
    Accessible.name: qsTr("Please wait")

    Repeater {
        model: 3

        Rectangle {
            id: dot
            required property int index
            width: Theme.step
            height: Theme.step
            radius: Theme.half
            color: dots.color

            SequentialAnimation on opacity {
                running: dots.visible
                loops: Animation.Infinite
                PauseAnimation { duration: dot.index * 160 }
                NumberAnimation { from: 1; to: 0.3; duration: 320 }
                NumberAnimation { from: 0.3; to: 1; duration: 320 }
                PauseAnimation { duration: (2 - dot.index) * 160 }
            }
        }
    }
}
