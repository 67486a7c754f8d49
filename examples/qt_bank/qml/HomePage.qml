import QtQuick
import QtQuick.Layouts
import Quorvance
import Tarnfield

FocusScope {
    id: page

    readonly property bool isWide: width >= Theme.wideWidth

    focus: true

    RiskScreen {
        type: "MAIN_SCREEN"
        actionId: 5
        active: Bank.isConfigured
        mouseIsFinger: Bank.mouseIsFinger
    }

    Flickable {
        objectName: "accountsView"
        anchors.fill: parent
        contentHeight: grid.implicitHeight + 2 * Theme.gap
        boundsBehavior: Flickable.StopAtBounds
        clip: true
        onHeightChanged: returnToBounds()
        onContentHeightChanged: returnToBounds()

        GridLayout {
            id: grid
            anchors.horizontalCenter: parent.horizontalCenter
            y: Theme.gap
            width: Math.min(page.width - 2 * Theme.gap, page.isWide ? 960 : 560)
            columns: page.isWide ? 2 : 1
            columnSpacing: Theme.wideGap
            rowSpacing: Theme.gap

            ColumnLayout {
                Layout.fillWidth: true
                Layout.preferredWidth: 1
                Layout.alignment: Qt.AlignTop
                spacing: Theme.gap

                Balance { Layout.fillWidth: true }
                RowLayout {
                    Layout.fillWidth: true
                    spacing: Theme.step

                    ActionButton {
                        objectName: "transfer"
                        Layout.fillWidth: true
                        Layout.preferredWidth: 1
                        text: qsTr("Transfer")
                        focus: true
                        onClicked: Bank.goTo(Bank.TransferPage)
                    }
                    ActionButton {
                        objectName: "addCard"
                        Layout.fillWidth: true
                        Layout.preferredWidth: 1
                        text: qsTr("Add a card")
                        isPrimary: false
                        onClicked: Bank.goTo(Bank.AddCardPage)
                    }
                }
                ListCard {
                    Layout.fillWidth: true
                    title: qsTr("Accounts and cards")
                    model: Bank.accounts
                }
            }
            ListCard {
                objectName: "movements"
                Layout.fillWidth: true
                Layout.preferredWidth: 1
                Layout.alignment: Qt.AlignTop
                title: qsTr("Latest movements")
                model: Bank.movements
            }
        }
    }
}
