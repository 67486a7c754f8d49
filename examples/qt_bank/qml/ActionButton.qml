import QtQuick
import QtQuick.Templates as T

// A primary action is filled, a secondary one outlined, a quiet one is only a word.
T.Button {
    id: button

    property bool isPrimary: true
    property bool isQuiet: false
    property bool isBusy: false
    property bool hasArrow: false

    implicitHeight: Theme.touch
    implicitWidth: words.implicitWidth + 2 * (isQuiet ? Theme.gap : Theme.wideGap)
    focusPolicy: Qt.StrongFocus
    enabled: !isBusy
    Accessible.name: text
    Keys.onReturnPressed: clicked()
    Keys.onEnterPressed: clicked()

    background: Rectangle {
        radius: Theme.radius
        color: button.isPrimary ? (button.down ? Theme.accentPressed : Theme.accent)
                                : (button.down ? Theme.pressed : button.isQuiet ? "transparent" : Theme.surface)
        border.width: button.isPrimary || button.isQuiet ? 0 : 1
        border.color: Theme.accent
        opacity: button.enabled || button.isBusy ? 1 : 0.45

        FocusRing { shown: button.visualFocus }
    }

    contentItem: Item {
        Row {
            id: words
            anchors.centerIn: parent
            visible: !button.isBusy
            opacity: button.enabled || button.isPrimary ? 1 : 0.45
            spacing: Theme.step

            LeftArrow {
                anchors.verticalCenter: parent.verticalCenter
                visible: button.hasArrow
                color: Theme.accent
                width: 16
            }
            Text {
                text: button.text
                font.pixelSize: Theme.body
                font.bold: true
                color: button.isPrimary ? Theme.accentText : Theme.accent
            }
        }
        BusyDots {
            anchors.centerIn: parent
            visible: button.isBusy
            color: button.isPrimary ? Theme.accentText : Theme.accent
        }
    }
}
