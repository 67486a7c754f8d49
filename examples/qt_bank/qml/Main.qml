import QtQuick
import Tarnfield

Window {
    id: window

    readonly property var sources: ["ConsentPage", "SignInPage", "HomePage", "TransferPage", "SecondFactorPage", "AddCardPage", "OutcomePage"]

    title: "Tarnfield"
    color: Theme.background
    minimumWidth: 360
    minimumHeight: 400

    TopBar {
        id: bar
        anchors { left: parent.left; right: parent.right; top: parent.top }
        hasBack: [Bank.TransferPage, Bank.AddCardPage, Bank.SecondFactorPage].includes(Bank.page)
        onBack: Bank.leave()
    }
    Loader {
        objectName: "page"
        anchors { left: parent.left; right: parent.right; top: bar.bottom; bottom: parent.bottom }
        source: window.sources[Bank.page] + ".qml"
        focus: true
        onLoaded: item.forceActiveFocus()
    }
    Toast {
        anchors { horizontalCenter: parent.horizontalCenter; top: bar.bottom; topMargin: Theme.step }
        z: 1
    }
}
