// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

import QtQuick 2.15

// A button for a finger, the pointer and the keyboard: at least 48 pixels in each direction.
Rectangle {
    id: button

    property var sheet
    property string label
    property string icon
    property bool isClose: false
    property bool isRow: false // of a list
    property bool isArmed: true
    property bool isChecked: false
    property real maxWidth: 100000
    readonly property real minSide: Math.max(48, Math.round(sheet.unit * 3))
    readonly property bool hasIcon: icon !== "" && picture.status === Image.Ready

    signal activated()

    width: isClose ? minSide : isRow ? maxWidth
                   : Math.max(minSide, Math.min(maxWidth, Math.ceil(text.implicitWidth) + 2 * sheet.gap))
    height: minSide
    radius: Math.round(sheet.unit * 0.25)
    color: (area.pressed && isArmed) || isChecked ? sheet.colors.pressedButton
                                            : isClose ? "transparent" : sheet.colors.button
    border {
        width: activeFocus ? 3 : isClose ? 0 : 1
        color: activeFocus ? sheet.colors.focus : sheet.colors.border
    }
    activeFocusOnTab: true

    Accessible.role: Accessible.Button
    Accessible.name: label
    Accessible.focusable: true
    Accessible.checked: isChecked
    Accessible.onPressAction: activated()
    Accessible.onToggleAction: activated()

    Keys.onReturnPressed: activated()
    Keys.onEnterPressed: activated()
    Keys.onSpacePressed: activated()

    Text {
        id: text

        anchors { fill: parent; leftMargin: sheet.gap / 2; rightMargin: sheet.gap / 2 }
        visible: !button.hasIcon && !button.isClose
        text: button.isClose ? "" : button.label
        textFormat: Text.PlainText
        renderType: Text.NativeRendering
        color: sheet.colors.text
        font.pixelSize: Math.round(sheet.unit)
        horizontalAlignment: button.isRow ? Text.AlignLeft : Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
        elide: Text.ElideRight
        maximumLineCount: 1
    }
    // The cross is drawn: a font of its own would take a millisecond of the start.
    Repeater {
        model: button.isClose ? [-45, 45] : []

        Rectangle {
            anchors.centerIn: parent
            width: Math.round(sheet.unit)
            height: Math.max(1, Math.round(sheet.unit / 10))
            rotation: modelData
            antialiasing: true
            color: sheet.colors.faintText
        }
    }
    Image {
        id: picture

        anchors.centerIn: parent
        width: Math.round(sheet.unit * 1.5)
        height: width
        visible: button.hasIcon
        source: button.icon === "" ? "" : "image://tavo/icon/" + encodeURIComponent(button.icon)
        sourceSize: Qt.size(width * look.pixelRatio, width * look.pixelRatio)
        asynchronous: true
    }
    MouseArea {
        id: area

        anchors.fill: parent
        onClicked: button.activated()
    }
}
