// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

import QtQuick 2.15

// The notifications of the past.
Rectangle {
    id: view

    readonly property real unit: attention.textSize
    readonly property real gap: Math.round(unit * 0.75)
    readonly property var colors: attention.palette

    implicitWidth: unit * 40
    implicitHeight: unit * 40
    color: colors.background
    border { width: 1; color: colors.border }

    LayoutMirroring.enabled: attention.isMirrored
    LayoutMirroring.childrenInherit: true

    Accessible.role: Accessible.Dialog
    Accessible.name: attention.titleText

    Keys.onEscapePressed: attention.closeRequested()

    Text {
        id: heading

        anchors {
            left: parent.left; leftMargin: view.gap
            right: closeButton.left; rightMargin: view.gap
            verticalCenter: closeButton.verticalCenter
        }
        text: attention.titleText
        textFormat: Text.PlainText
        renderType: Text.NativeRendering
        color: view.colors.text
        font { pixelSize: Math.round(view.unit * 1.15); bold: true }
        horizontalAlignment: Text.AlignLeft
        elide: Text.ElideRight
        maximumLineCount: 1
    }
    Button {
        id: closeButton

        anchors { right: parent.right; top: parent.top; margins: view.gap }
        isClose: true
        label: attention.closeText
        sheet: view
        onActivated: attention.closeRequested()
    }
    Flow {
        id: choices

        anchors {
            left: parent.left; right: parent.right; top: closeButton.bottom
            margins: view.gap; topMargin: view.gap / 2
        }
        spacing: Math.round(view.gap * 0.66)

        Button {
            label: attention.allText
            sheet: view
            isChecked: !attention.isOnlyMissed
            Accessible.role: Accessible.RadioButton
            Accessible.checkable: true
            onActivated: attention.isOnlyMissed = false
        }
        Button {
            label: attention.missedText
            sheet: view
            isChecked: attention.isOnlyMissed
            Accessible.role: Accessible.RadioButton
            Accessible.checkable: true
            onActivated: attention.isOnlyMissed = true
        }
        Button {
            label: attention.quietText
            sheet: view
            isChecked: attention.isQuiet
            Accessible.role: Accessible.CheckBox
            Accessible.checkable: true
            onActivated: attention.toggleQuiet()
        }
    }
    Text {
        anchors { left: parent.left; right: parent.right; top: choices.bottom; margins: view.gap }
        visible: text !== ""
        text: attention.emptyText
        textFormat: Text.PlainText
        renderType: Text.NativeRendering
        color: view.colors.faintText
        font.pixelSize: Math.round(view.unit)
        horizontalAlignment: Text.AlignLeft
        wrapMode: Text.Wrap
        maximumLineCount: 5
        elide: Text.ElideRight
    }

    Item {
        anchors {
            left: parent.left; right: parent.right; top: choices.bottom; bottom: parent.bottom
            margins: view.gap
        }

        ListView {
            id: list

            // The entry of which all of the text is shown, by its number.
            property var opened: 0

            anchors.fill: parent
            focus: true
            activeFocusOnTab: true
            clip: true
            interactive: contentHeight > height
            model: attention.history
            cacheBuffer: 0
            boundsBehavior: Flickable.StopAtBounds
            highlightMoveDuration: 0
            keyNavigationEnabled: true

            Accessible.role: Accessible.List
            Accessible.name: attention.isOnlyMissed ? attention.missedText : attention.allText

            // What has been on the screen for a moment is reported as seen in the end.
            Timer {
                id: moment

                interval: 400
                onTriggered: {
                    var last = list.indexAt(1, list.contentY + list.height - 1)
                    attention.noteShown(list.indexAt(1, list.contentY), last < 0 && list.atYEnd ? list.count - 1 : last)
                }
            }

            function turn(pages) {
                var place = Math.max(0, Math.min(contentHeight - height, contentY - originY + pages * height))
                contentY = originY + place
                currentIndex = Math.max(0, indexAt(1, contentY + height / 2))
            }

            onContentYChanged: moment.restart()
            // Entries are laid out a moment after they have come.
            onContentHeightChanged: moment.restart()

            Connections {
                target: attention.history
                function onModelReset() { list.opened = 0 }
            }

            Keys.onPressed: {
                if (event.key === Qt.Key_PageDown) turn(0.9)
                else if (event.key === Qt.Key_PageUp) turn(-0.9)
                else if (event.key === Qt.Key_Home) currentIndex = 0
                else if (event.key === Qt.Key_End) currentIndex = count - 1
                else return
                event.accepted = true
            }

            delegate: Rectangle {
                id: entry

                readonly property bool isOpened: list.opened === number
                // The names of the model, which the items below may not hide.
                readonly property string heading: title

                function toggle() {
                    list.currentIndex = index
                    list.opened = isOpened ? 0 : number
                }

                width: list.width
                height: texts.height + 2 * view.gap
                color: view.colors.background
                focus: ListView.isCurrentItem
                border {
                    width: activeFocus ? 2 : 0
                    color: view.colors.focus
                }

                Accessible.role: Accessible.ListItem
                Accessible.name: heading
                Accessible.description: [sender, time, outcome, body].filter(Boolean).join(". ")
                Accessible.focusable: true
                Accessible.focused: activeFocus
                Accessible.onPressAction: toggle()

                Keys.onReturnPressed: toggle()
                Keys.onEnterPressed: toggle()
                Keys.onSpacePressed: toggle()

                // Not only a colour says that it was missed: the line below does, too.
                Rectangle {
                    anchors { left: parent.left; top: parent.top; bottom: parent.bottom; margins: 4 }
                    width: Math.round(view.unit * 0.25)
                    visible: isMissed
                    color: view.colors.accent
                }
                Column {
                    id: texts

                    anchors {
                        left: parent.left; right: parent.right; top: parent.top; margins: view.gap
                    }
                    spacing: Math.round(view.unit * 0.15)

                    Text {
                        width: parent.width
                        text: [sender, time, outcome].filter(Boolean).join(" \u00b7 ")
                        textFormat: Text.PlainText
                        renderType: Text.NativeRendering
                        color: view.colors.faintText
                        font.pixelSize: Math.round(view.unit * 0.85)
                        horizontalAlignment: Text.AlignLeft
                        elide: Text.ElideRight
                        maximumLineCount: 1
                    }
                    Text {
                        width: parent.width
                        visible: text !== ""
                        text: entry.heading
                        textFormat: Text.PlainText
                        renderType: Text.NativeRendering
                        color: view.colors.text
                        font { pixelSize: Math.round(view.unit); bold: true }
                        horizontalAlignment: Text.AlignLeft
                        wrapMode: Text.Wrap
                        elide: Text.ElideRight
                        maximumLineCount: entry.isOpened ? 10 : 1
                    }
                    Text {
                        width: parent.width
                        visible: text !== ""
                        text: body
                        textFormat: Text.PlainText
                        renderType: Text.NativeRendering
                        color: view.colors.text
                        font.pixelSize: Math.round(view.unit)
                        wrapMode: Text.Wrap
                        elide: Text.ElideRight
                        maximumLineCount: entry.isOpened ? 1000 : 2
                    }
                }
                Rectangle {
                    anchors { left: parent.left; right: parent.right; bottom: parent.bottom }
                    height: 1
                    color: view.colors.border
                }
                MouseArea {
                    anchors.fill: parent
                    onClicked: entry.toggle()
                }
            }
        }
    }

    ScrollMark { sheet: view; area: list }
}
