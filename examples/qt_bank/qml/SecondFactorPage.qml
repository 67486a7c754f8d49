import QtQuick
import Quorvance
import Tarnfield

CodeEntry {
    id: page

    title: qsTr("Confirm that it is you")
    explanation: Bank.confirmationText
    notice: Bank.notice
    isBusy: Bank.isBusy
    length: 6
    hint: qsTr("This is a demonstration. The code is 424242.")
    onEntered: code => Bank.confirm(code)

    RiskScreen {
        type: "PINCODE"
        actionId: 2
        view: page
        active: Bank.isConfigured
        mouseIsFinger: Bank.mouseIsFinger
    }
}
