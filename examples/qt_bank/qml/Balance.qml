import QtQuick
import Tarnfield

Rectangle {
    implicitHeight: column.implicitHeight + 2 * Theme.wideGap
    radius: Theme.gap
    color: Theme.accent

    Column {
        id: column
        anchors { left: parent.left; right: parent.right; verticalCenter: parent.verticalCenter; margins: Theme.wideGap }
        spacing: Theme.step

        BodyText {
            width: parent.width
            text: qsTr("Hello %1, your balance").arg(Bank.firstName)
            color: Theme.accentTextSecondary
        }
        Text {
            objectName: "balance"
            width: parent.width
            text: Bank.balance
            color: Theme.accentText
            font { pixelSize: Theme.display; bold: true }
            fontSizeMode: Text.HorizontalFit
        }
        BodyText {
            width: parent.width
            text: qsTr("Last sign-in today, on this device")
            color: Theme.accentTextSecondary
            font.pixelSize: Theme.caption
        }
    }
}
