import QtQuick
import QtQuick.Layouts
import Quorvance
import Tarnfield

FormPage {
    id: page

    property string digits
    readonly property int length: 8

    function part(from, to, blank) {
        return (digits.slice(from, to) + blank).slice(0, to - from);
    }

    function add() {
        if (digits.length === length && !Bank.isBusy)
            Bank.addCard(digits.slice(0, 4), digits.slice(4, 6), digits.slice(6, 8));
    }

    RiskScreen {
        type: "ADD_PAYMENT_SCREEN"
        actionId: 4
        view: page
        active: Bank.isConfigured
        mouseIsFinger: Bank.mouseIsFinger
    }

    title: qsTr("Add a card")
    explanation: qsTr("The last four digits of the number, then the month and the year in which it ends.")
    notice: Bank.notice
    Keys.onPressed: event => numberPad.takeKey(event)
    Keys.onReturnPressed: add()
    Keys.onEnterPressed: add()

    Rectangle {
        Layout.fillWidth: true
        Layout.maximumWidth: 340
        implicitHeight: 172
        radius: Theme.gap
        color: Theme.accent

        Mark {
            x: Theme.wideGap
            y: Theme.wideGap - Theme.half
        }
        Text {
            objectName: "cardNumber"
            x: Theme.wideGap
            y: 82
            text: "••••  ••••  ••••  " + page.part(0, 4, "____")
            color: Theme.accentText
            font.pixelSize: Theme.lead + 2
        }
        Text {
            x: Theme.wideGap
            y: 130
            text: Bank.fullName
            color: Theme.accentText
            font.pixelSize: Theme.body
        }
        Text {
            anchors { right: parent.right; rightMargin: Theme.wideGap }
            y: 130
            text: page.part(4, 6, "MM") + " / " + page.part(6, 8, "YY")
            color: page.digits.length > 4 ? Theme.accentText : Theme.accentTextSecondary
            font.pixelSize: Theme.body
        }
    }

    pad: [
        NumberPad {
            id: numberPad
            Layout.fillWidth: true
            keyHeight: 56
            enabled: !Bank.isBusy
            onTyped: digit => {
                if (page.digits.length < page.length)
                    page.digits += digit;
            }
            onErased: page.digits = page.digits.slice(0, -1)
        },
        ActionButton {
            objectName: "add"
            Layout.fillWidth: true
            text: qsTr("Add this card")
            enabled: page.digits.length === page.length && !Bank.isBusy
            isBusy: Bank.isBusy
            onClicked: page.add()
        }
    ]
}
