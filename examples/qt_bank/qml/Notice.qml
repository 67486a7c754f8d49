import QtQuick

// What went wrong or needs care, in words; takes no room while there is nothing to say.
Rectangle {
    id: notice

    property string text
    property bool isDanger: true

    visible: text !== ""
    implicitHeight: visible ? words.implicitHeight + 2 * Theme.step + Theme.half : 0
    radius: Theme.step
    color: isDanger ? Theme.dangerSurface : Theme.cautionSurface
    Accessible.role: Accessible.AlertMessage
    Accessible.name: text

    BodyText {
        id: words
        anchors { left: parent.left; right: parent.right; verticalCenter: parent.verticalCenter; margins: Theme.gap }
        text: notice.text
        color: notice.isDanger ? Theme.danger : Theme.caution
    }
}
