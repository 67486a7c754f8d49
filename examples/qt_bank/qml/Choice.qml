import QtQuick
import QtQuick.Templates as T

// One of few, all of them in sight.
Card {
    id: choice

    property string label
    property var model
    property int current: 0

    signal chosen(int index)

    padding: Theme.step
    spacing: 0

    BodyText {
        x: Theme.step
        bottomPadding: Theme.half
        text: choice.label
        color: Theme.inkSecondary
        font.pixelSize: Theme.caption
    }
    Repeater {
        model: choice.model

        T.RadioButton {
            id: option

            required property var modelData
            required property int index

            objectName: "option" + index
            width: parent.width
            implicitHeight: 56
            checked: index === choice.current
            focusPolicy: Qt.StrongFocus
            Accessible.name: modelData.name
            onClicked: choice.chosen(index)

            background: Rectangle {
                radius: Theme.step
                color: option.down ? Theme.pressed : option.checked ? Theme.accentSurface : "transparent"

                FocusRing { shown: option.visualFocus; anchors.margins: 0; radius: Theme.step }
            }
            indicator: Rectangle {
                x: Theme.step
                anchors.verticalCenter: parent.verticalCenter
                width: 20
                height: 20
                radius: 10
                color: Theme.surface
                border.width: option.checked ? 6 : 2
                border.color: option.checked ? Theme.accent : Theme.disabled
            }
            contentItem: Column {
                leftPadding: 44
                topPadding: Theme.step
                spacing: 2

                BodyText { text: option.modelData.name; font.bold: option.checked }
                BodyText { text: option.modelData.number; color: Theme.inkSecondary; font.pixelSize: Theme.caption }
            }
        }
    }
}
