import QtQuick
import QtQuick.Layouts

// Rows of a name, what belongs to it, and an amount.
Card {
    id: list

    property string title
    property var model

    spacing: 0

    BodyText {
        bottomPadding: Theme.step
        text: list.title
        font { pixelSize: Theme.lead; bold: true }
        Accessible.role: Accessible.Heading
    }
    Repeater {
        model: list.model

        Item {
            required property var modelData
            required property int index
            width: parent.width
            height: 58

            Rectangle {
                width: parent.width
                height: 1
                color: Theme.line
                visible: parent.index > 0
            }
            RowLayout {
                anchors.fill: parent
                spacing: Theme.gap

                Column {
                    Layout.fillWidth: true
                    spacing: 2

                    BodyText {
                        width: parent.width
                        text: modelData.name
                        wrapMode: Text.NoWrap
                        elide: Text.ElideRight
                    }
                    BodyText {
                        width: parent.width
                        text: modelData.number
                        color: Theme.inkSecondary
                        font.pixelSize: Theme.caption
                        wrapMode: Text.NoWrap
                        elide: Text.ElideRight
                    }
                }
                BodyText {
                    text: modelData.amount
                    font.bold: true
                    color: modelData.isIncome ? Theme.accent : Theme.ink
                }
            }
        }
    }
}
