import QtQuick
import QtQuick.Layouts
import Tarnfield

// How it ended: done, denied, or held until the bank can be reached.
FormPage {
    id: page

    prefersOneColumn: true
    readonly property bool isDone: Bank.outcome.isDone

    Rectangle {
        Layout.fillWidth: true
        implicitHeight: words.implicitHeight + 2 * Theme.section
        radius: Theme.radius
        color: Theme.surface
        border.width: 1
        border.color: Theme.line

        ColumnLayout {
            id: words
            anchors { left: parent.left; right: parent.right; verticalCenter: parent.verticalCenter; margins: Theme.wideGap }
            spacing: Theme.gap

            Rectangle {
                implicitWidth: 56
                implicitHeight: 56
                radius: 28
                color: page.isDone ? Theme.accentSurface : Theme.dangerSurface

                OutcomeSign {
                    anchors.centerIn: parent
                    isDone: page.isDone
                }
            }
            Text {
                objectName: "outcomeTitle"
                Layout.fillWidth: true
                text: Bank.outcome.title
                color: page.isDone ? Theme.ink : Theme.danger
                font { pixelSize: Theme.title; bold: true }
                wrapMode: Text.Wrap
            }
            BodyText {
                Layout.fillWidth: true
                text: Bank.outcome.text
            }
            BodyText {
                Layout.fillWidth: true
                visible: text !== ""
                text: Bank.outcome.reference
                color: Theme.inkSecondary
                font.pixelSize: Theme.caption
            }
        }
    }

    pad: ActionButton {
        objectName: "toAccounts"
        Layout.fillWidth: true
        text: Bank.isSignedIn ? qsTr("Back to your accounts") : qsTr("Back to the start")
        focus: true
        onClicked: Bank.leave()
    }
}
