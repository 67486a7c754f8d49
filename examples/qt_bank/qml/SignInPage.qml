import QtQuick
import Quorvance
import Tarnfield

CodeEntry {
    id: page

    title: qsTr("Welcome back, %1").arg(Bank.firstName)
    explanation: qsTr("Enter your PIN to sign in.")
    notice: Bank.notice
    isBusy: Bank.isBusy
    hint: qsTr("This is a demonstration. The PIN is 2468.")
    onEntered: code => Bank.signIn(code)

    RiskScreen {
        type: "PINCODE"
        actionId: 1
        view: page
        active: Bank.isConfigured
        mouseIsFinger: Bank.mouseIsFinger
    }
}
