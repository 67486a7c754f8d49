import QtQuick

// How many of the digits are typed, never which.
Row {
    id: dots

    property int count: 4
    property int filled: 0

    spacing: Theme.gap
    Accessible.role: Accessible.StaticText
    Accessible.name: qsTr("%1 of %2 digits").arg(filled).arg(count)

    Repeater {
        model: dots.count

        Rectangle {
            required property int index
            readonly property bool isFilled: index < dots.filled
            width: 16
            height: 16
            radius: 8
            color: isFilled ? Theme.accent : "transparent"
            border.width: 2
            border.color: isFilled ? Theme.accent : Theme.disabled
        }
    }
}
