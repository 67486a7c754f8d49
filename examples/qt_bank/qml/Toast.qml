import QtQuick
import Tarnfield

// The newest line of the debug log for a moment. It has no handler of its own: touches go through.
Rectangle {
    visible: Toasts.text !== ""
    width: Math.min(parent.width - 2 * Theme.gap, words.implicitWidth + 2 * Theme.gap)
    height: words.implicitHeight + 2 * Theme.step + Theme.half
    radius: Theme.step
    color: Theme.ink
    opacity: 0.94

    BodyText {
        id: words
        objectName: "toastText"
        anchors { left: parent.left; right: parent.right; verticalCenter: parent.verticalCenter; margins: Theme.gap }
        horizontalAlignment: Text.AlignHCenter
        text: Toasts.text
        color: Theme.accentText
        font.pixelSize: Theme.caption
        maximumLineCount: 2
        elide: Text.ElideRight
    }
}
