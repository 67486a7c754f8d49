pragma Singleton

import QtQuick

// One accent, one scale of type, steps of 8 for every distance. Each text colour has a contrast of
// 4.5 to 1 or more with the surfaces that it stands on.
QtObject {
    readonly property color accent: "#0b6457"
    readonly property color accentPressed: "#084c42"
    readonly property color accentSurface: "#e3f1ee"
    readonly property color accentText: "#ffffff"
    readonly property color accentTextSecondary: "#cfe8e3"

    readonly property color background: "#f4f6f5"
    readonly property color surface: "#ffffff"
    readonly property color pressed: "#e6ebe9"
    readonly property color line: "#d9e0dd"
    readonly property color ink: "#15211e"
    readonly property color inkSecondary: "#52605c"
    readonly property color disabled: "#74807c"

    readonly property color danger: "#a8201a"
    readonly property color dangerSurface: "#fcebe9"
    readonly property color caution: "#744700"
    readonly property color cautionSurface: "#fff3dc"

    readonly property int half: 4
    readonly property int step: 8
    readonly property int gap: 16
    readonly property int wideGap: 24
    readonly property int section: 32
    readonly property int radius: 12
    readonly property int touch: 52

    readonly property int caption: 13
    readonly property int body: 15
    readonly property int lead: 17
    readonly property int title: 24
    readonly property int display: 34

    // From here on there is room for two columns.
    readonly property int wideWidth: 760
    readonly property int highEnough: 600
    readonly property int columnWidth: 432
}
