// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

import QtQuick 2.15

// Says that people do not want to be disturbed: a moon, and how many notifications were missed. A touch opens
// the history.
Rectangle {
    id: mark

    readonly property real unit: attention.textSize
    readonly property var colors: attention.palette
    readonly property real side: Math.max(48, Math.round(unit * 3))

    implicitWidth: row.width + (missed.visible ? Math.round(unit) : side - moon.width)
    implicitHeight: side
    color: colors.background
    border { width: 1; color: colors.border }

    LayoutMirroring.enabled: attention.isMirrored
    LayoutMirroring.childrenInherit: true

    Accessible.role: Accessible.Button
    Accessible.name: attention.markText
    Accessible.onPressAction: attention.historyRequested()

    Row {
        id: row

        anchors.centerIn: parent
        spacing: Math.round(mark.unit / 2)

        // A crescent: a disc in front of another one.
        Item {
            id: moon

            width: Math.round(mark.unit * 1.4)
            height: width
            visible: attention.isQuiet

            Rectangle {
                anchors.fill: parent
                radius: width / 2
                color: mark.colors.text
            }
            Rectangle {
                x: Math.round(parent.width * 0.35)
                y: -Math.round(parent.width * 0.15)
                width: parent.width
                height: width
                radius: width / 2
                color: mark.colors.background
            }
        }
        Text {
            id: missed

            anchors.verticalCenter: parent.verticalCenter
            visible: attention.missedCount > 0
            text: attention.missedText
            textFormat: Text.PlainText
            renderType: Text.NativeRendering
            color: mark.colors.text
            font.pixelSize: Math.round(mark.unit)
        }
    }
    MouseArea {
        anchors.fill: parent
        onClicked: attention.historyRequested()
    }
}
