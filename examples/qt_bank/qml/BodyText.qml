import QtQuick

Text {
    color: Theme.ink
    font.pixelSize: Theme.body
    wrapMode: Text.Wrap
    lineHeight: 1.15
    textFormat: Text.PlainText
}
