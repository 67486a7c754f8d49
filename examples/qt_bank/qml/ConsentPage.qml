import QtQuick
import QtQuick.Layouts
import Tarnfield

FormPage {
    id: page

    prefersOneColumn: true
    title: qsTr("Help us keep your money safe")
    explanation: qsTr("To tell you from somebody who only has your PIN, Tarnfield can check the device and how it is used when you sign in, pay or add a card.")

    Card {
        Layout.fillWidth: true
        spacing: Theme.gap

        Repeater {
            model: [
                [qsTr("About this device"), qsTr("Model, system, screen and network, its place where you allow that, and a number that we give it.")],
                [qsTr("How you use it"), qsTr("Where and how firmly you touch the screen, and how the device moves meanwhile.")],
                [qsTr("What you do"), qsTr("That you sign in, transfer or add a card, with the amount and who is paid.")]
            ]

            Column {
                required property var modelData
                width: parent.width
                spacing: Theme.half

                BodyText { width: parent.width; text: modelData[0]; font.bold: true }
                BodyText { width: parent.width; text: modelData[1]; color: Theme.inkSecondary }
            }
        }
    }

    pad: [
        ActionButton {
            objectName: "agree"
            Layout.fillWidth: true
            text: qsTr("I agree")
            focus: true
            onClicked: Bank.answerConsent(true)
        },
        ActionButton {
            objectName: "decline"
            Layout.fillWidth: true
            text: qsTr("Not now")
            isPrimary: false
            onClicked: Bank.answerConsent(false)
        },
        BodyText {
            Layout.fillWidth: true
            text: qsTr("Without it nothing is collected, and larger transfers must be made in a branch. Change your mind at any time under Privacy.")
            color: Theme.inkSecondary
            font.pixelSize: Theme.caption
        }
    ]
}
