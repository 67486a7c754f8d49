import QtQuick
import QtQuick.Layouts
import Quorvance
import Tarnfield

FormPage {
    id: page

    property int payee: 0
    property int cents: 0
    readonly property int mostCents: 99999999

    function type(digits) {
        const next = Number(String(cents) + digits);
        if (!Bank.isBusy && next <= mostCents)
            cents = next;
    }

    function send() {
        if (cents > 0 && !Bank.isBusy)
            Bank.transfer(payee, cents);
    }

    RiskScreen {
        type: "TRANSACTION_DETAILS"
        actionId: 3
        view: page
        active: Bank.isConfigured
        mouseIsFinger: Bank.mouseIsFinger
    }

    title: qsTr("Transfer")
    notice: Bank.notice
    Keys.onPressed: event => numberPad.takeKey(event)
    Keys.onReturnPressed: send()
    Keys.onEnterPressed: send()

    Choice {
        objectName: "payees"
        Layout.fillWidth: true
        label: qsTr("To")
        model: Bank.payees
        current: page.payee
        enabled: !Bank.isBusy
        onChosen: index => page.payee = index
    }
    Card {
        Layout.fillWidth: true
        spacing: Theme.half

        BodyText { text: qsTr("Amount"); color: Theme.inkSecondary; font.pixelSize: Theme.caption }
        Text {
            objectName: "amount"
            text: Bank.money(page.cents)
            color: page.cents > 0 ? Theme.ink : Theme.disabled
            font { pixelSize: Theme.display; bold: true }
        }
        BodyText {
            text: qsTr("From %1, %2 available").arg(Bank.accounts[0].name).arg(Bank.accounts[0].amount)
            color: Theme.inkSecondary
            font.pixelSize: Theme.caption
        }
    }

    pad: [
        NumberPad {
            id: numberPad
            Layout.fillWidth: true
            keyHeight: 56
            extra: "00"
            enabled: !Bank.isBusy
            onTyped: digits => page.type(digits)
            onErased: page.cents = Math.floor(page.cents / 10)
        },
        ActionButton {
            objectName: "send"
            Layout.fillWidth: true
            text: page.cents > 0 ? qsTr("Send %1").arg(Bank.money(page.cents)) : qsTr("Send")
            enabled: page.cents > 0 && !Bank.isBusy
            isBusy: Bank.isBusy
            onClicked: page.send()
        }
    ]
}
