import QtQuick

// A surface with a hairline around it.
Rectangle {
    id: card

    default property alias content: column.data
    property alias spacing: column.spacing
    property int padding: Theme.gap

    color: Theme.surface
    radius: Theme.radius
    border.width: 1
    border.color: Theme.line
    implicitHeight: column.implicitHeight + 2 * padding
    implicitWidth: column.implicitWidth + 2 * padding

    Column {
        id: column
        anchors { left: parent.left; right: parent.right; top: parent.top; margins: card.padding }
        spacing: Theme.step
    }
}
