import QtQuick
import QtQuick.Layouts
import Tarnfield

// The name of the bank, the way back, and what is always at hand.
Rectangle {
    id: bar

    property bool hasBack: false

    signal back()

    implicitHeight: 64
    color: Theme.surface

    Rectangle {
        anchors { left: parent.left; right: parent.right; bottom: parent.bottom }
        height: 1
        color: Theme.line
    }

    RowLayout {
        anchors { fill: parent; leftMargin: bar.hasBack ? Theme.step : Theme.gap; rightMargin: Theme.step }
        spacing: Theme.step

        ActionButton {
            objectName: "back"
            visible: bar.hasBack
            text: qsTr("Back")
            hasArrow: true
            enabled: !Bank.isBusy
            isPrimary: false
            isQuiet: true
            onClicked: bar.back()
        }
        Mark { visible: !bar.hasBack }
        Text {
            visible: !bar.hasBack
            text: "Tarnfield"
            color: Theme.ink
            font { pixelSize: Theme.lead; bold: true }
        }
        Item { Layout.fillWidth: true }
        ActionButton {
            objectName: "privacy"
            visible: !bar.hasBack && Bank.page !== Bank.ConsentPage
            text: qsTr("Privacy")
            isPrimary: false
            isQuiet: true
            onClicked: Bank.openPrivacy()
        }
        ActionButton {
            objectName: "signOut"
            visible: Bank.isSignedIn && !bar.hasBack
            text: qsTr("Sign out")
            isPrimary: false
            isQuiet: true
            onClicked: Bank.signOut()
        }
    }
}
