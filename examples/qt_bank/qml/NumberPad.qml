import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T

// Digits for a finger, and for a keyboard through `takeKey`.
GridLayout {
    id: pad

    // What the key at the lower left types; none when empty.
    property string extra: ""
    property int keyHeight: 60

    signal typed(string digits)
    signal erased()

    columns: 3
    rowSpacing: Theme.step
    columnSpacing: Theme.step

    function takeKey(event) {
        if (/^[0-9]$/.test(event.text))
            pad.typed(event.text);
        else if (event.key === Qt.Key_Backspace)
            pad.erased();
        else
            return;
        event.accepted = true;
    }

    Repeater {
        model: ["1", "2", "3", "4", "5", "6", "7", "8", "9", pad.extra, "0", "erase"]

        T.Button {
            id: key

            required property string modelData
            readonly property bool isErase: modelData === "erase"

            objectName: "key" + modelData
            visible: modelData !== ""
            Layout.fillWidth: true
            Layout.preferredHeight: pad.keyHeight
            // An empty key keeps its place.
            Layout.column: pad.columnOf(modelData)
            Layout.row: pad.rowOf(modelData)
            focusPolicy: Qt.StrongFocus
            enabled: pad.enabled
            Accessible.name: isErase ? qsTr("Erase") : modelData
            onClicked: isErase ? pad.erased() : pad.typed(modelData)

            background: Rectangle {
                radius: Theme.radius
                color: key.down ? Theme.pressed : key.isErase ? "transparent" : Theme.surface
                border.width: key.isErase ? 0 : 1
                border.color: Theme.line

                FocusRing { shown: key.visualFocus }
            }

            contentItem: Item {
                Text {
                    anchors.centerIn: parent
                    visible: !key.isErase
                    text: key.modelData
                    color: key.enabled ? Theme.ink : Theme.disabled
                    font.pixelSize: Theme.title
                }
                LeftArrow {
                    anchors.centerIn: parent
                    visible: key.isErase
                    color: key.enabled ? Theme.ink : Theme.disabled
                }
            }
        }
    }

    function columnOf(key) {
        return key === "erase" ? 2 : key === "0" ? 1 : key === extra ? 0 : (Number(key) - 1) % 3;
    }

    function rowOf(key) {
        return key === "erase" || key === "0" || key === extra ? 3 : Math.floor((Number(key) - 1) / 3);
    }
}
