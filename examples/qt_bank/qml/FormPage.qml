import QtQuick
import QtQuick.Layouts

// A heading and fields, and a pad below them or, where there is room, beside them.
FocusScope {
    id: page

    property string title
    property string explanation
    property alias notice: notice.text
    property alias noticeIsDanger: notice.isDanger
    default property alias fields: fields.data
    property alias pad: padColumn.data
    // True keeps one column also where there is room, as long as the page is high enough.
    property bool prefersOneColumn: false
    readonly property bool isWide: width >= Theme.wideWidth
    readonly property bool hasTwoColumns: isWide && !(prefersOneColumn && height >= Theme.highEnough)

    focus: true

    Flickable {
        anchors.fill: parent
        contentHeight: Math.max(height, grid.implicitHeight + 2 * Theme.wideGap)
        boundsBehavior: Flickable.StopAtBounds
        clip: true

        GridLayout {
            id: grid
            anchors.horizontalCenter: parent.horizontalCenter
            y: page.isWide ? Math.max(Theme.wideGap, (parent.height - implicitHeight) / 2 - Theme.section) : Theme.wideGap
            // On a narrow screen the pad stands where the thumb is.
            height: page.isWide ? implicitHeight : Math.max(implicitHeight, page.height - 2 * Theme.wideGap)
            width: Math.min(page.width - 2 * Theme.wideGap, page.hasTwoColumns ? 2 * Theme.columnWidth : Theme.columnWidth)
            columns: page.hasTwoColumns ? 2 : 1
            columnSpacing: 2 * Theme.section
            rowSpacing: Theme.gap

            ColumnLayout {
                Layout.fillWidth: true
                Layout.preferredWidth: 1
                Layout.alignment: Qt.AlignTop
                Layout.fillHeight: true
                spacing: Theme.gap

                Text {
                    Layout.fillWidth: true
                    visible: text !== ""
                    text: page.title
                    color: Theme.ink
                    font { pixelSize: Theme.title; bold: true }
                    wrapMode: Text.Wrap
                    Accessible.role: Accessible.Heading
                }
                BodyText {
                    Layout.fillWidth: true
                    visible: text !== ""
                    text: page.explanation
                    color: Theme.inkSecondary
                }
                Notice {
                    id: notice
                    objectName: "notice"
                    Layout.fillWidth: true
                }
                ColumnLayout {
                    id: fields
                    Layout.fillWidth: true
                    spacing: Theme.gap
                }
                Item { Layout.fillHeight: true }
            }
            ColumnLayout {
                id: padColumn
                Layout.fillWidth: true
                Layout.preferredWidth: 1
                Layout.alignment: Qt.AlignTop
                spacing: Theme.gap
            }
        }
    }
}
