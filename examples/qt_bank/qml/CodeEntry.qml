import QtQuick
import QtQuick.Layouts

// Digits that stay hidden, handed over by themselves once all are typed.
FormPage {
    id: entry

    property int length: 4
    property bool isBusy: false
    property string hint
    property string code

    signal entered(string code)

    function take(digits) {
        if (isBusy || code.length >= length)
            return;
        code += digits;
        if (code.length === length) {
            const whole = code;
            code = "";
            entered(whole);
        }
    }

    Keys.onPressed: event => numberPad.takeKey(event)

    Item {
        Layout.fillWidth: true
        implicitHeight: Theme.section

        PinDots {
            anchors.verticalCenter: parent.verticalCenter
            visible: !entry.isBusy
            count: entry.length
            filled: entry.code.length
        }
        BusyDots {
            objectName: "busy"
            anchors.verticalCenter: parent.verticalCenter
            visible: entry.isBusy
        }
    }
    BodyText {
        Layout.fillWidth: true
        text: entry.hint
        visible: text !== ""
        color: Theme.inkSecondary
        font.pixelSize: Theme.caption
    }

    pad: NumberPad {
        id: numberPad
        Layout.fillWidth: true
        keyHeight: 76
        enabled: !entry.isBusy
        onTyped: digits => entry.take(digits)
        onErased: entry.code = entry.code.slice(0, -1)
    }
}
