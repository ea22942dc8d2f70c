// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

import QtQuick 2.15

// A message. The window gives it a width and takes its height. "message" and "look" are documented in
// docs/display.md.
Rectangle {
    id: card

    readonly property real unit: look.textSize
    readonly property real gap: Math.round(unit * 0.75)
    readonly property bool isLarge: look.mode === "fullscreen"
    readonly property var colors: look.palette
    readonly property real maxHeight: look.maxHeight
    // For the text and the buttons.
    readonly property real room: maxHeight - 2 * gap - head.height - meter.usedHeight
                                 - problem.usedHeight - content.spacing

    implicitWidth: 420
    implicitHeight: Math.min(maxHeight, content.implicitHeight + 2 * gap)
    color: colors.background
    border { width: 1; color: colors.border }

    Keys.onEscapePressed: message.close()
    Keys.onUpPressed: scroll.move(-3 * unit)
    Keys.onDownPressed: scroll.move(3 * unit)

    LayoutMirroring.enabled: look.isMirrored
    LayoutMirroring.childrenInherit: true

    Accessible.role: Accessible.Notification
    Accessible.name: message.title
    Accessible.description: look.spokenText

    // The priority, as a stripe and not only as a colour: it grows with the priority.
    Rectangle {
        anchors { left: parent.left; top: parent.top; bottom: parent.bottom }
        width: Math.round(card.unit * (0.3 + 0.15 * Math.max(0, Math.min(3, message.priority))))
        color: card.colors.accent
    }

    MouseArea {
        anchors.fill: parent
        enabled: message.hasDefaultAction
        onClicked: message.activateDefault()
    }

    Column {
        id: content

        anchors {
            left: parent.left; right: parent.right; top: parent.top
            leftMargin: card.gap + Math.round(card.unit * 0.75)
            rightMargin: card.gap; topMargin: card.gap
        }
        spacing: Math.round(card.gap * 0.75)

        Item {
            id: head

            width: parent.width
            height: Math.max(closeButton.height, headTexts.height)

            Image {
                id: picture

                readonly property real side: message.picture === "" || status === Image.Error
                                             ? 0 : Math.round(card.unit * (card.isLarge ? 6 : 3.5))

                anchors { left: parent.left; top: parent.top }
                width: side
                height: side
                visible: side > 0
                source: message.picture
                sourceSize: Qt.size(Math.round(card.unit * 6 * look.pixelRatio),
                                    Math.round(card.unit * 6 * look.pixelRatio))
                fillMode: Image.PreserveAspectFit
                asynchronous: true
                mirror: false
                Accessible.ignored: true
            }

            Column {
                id: headTexts

                anchors {
                    left: picture.right; leftMargin: picture.visible ? card.gap : 0
                    right: closeButton.left; rightMargin: card.gap / 2
                }
                spacing: Math.round(card.unit * 0.15)

                Item {
                    width: parent.width
                    height: application.visible || counters.visible ? Math.max(application.height, counters.height) : 0

                    Text {
                        id: application

                        anchors { left: parent.left; right: counters.left; rightMargin: card.gap / 2 }
                        visible: text !== ""
                        text: message.application
                        textFormat: Text.PlainText
                        renderType: Text.NativeRendering
                        color: card.colors.faintText
                        font.pixelSize: Math.round(card.unit * 0.85)
                        horizontalAlignment: Text.AlignLeft // of the layout, not of the text
                        elide: Text.ElideRight
                        maximumLineCount: 1
                    }
                    Row {
                        id: counters

                        anchors.right: parent.right
                        spacing: Math.round(card.gap / 2)
                        visible: message.seconds >= 0 || message.waitingCount > 0

                        Text {
                            visible: message.waitingCount > 0
                            text: look.waitingText
                            textFormat: Text.PlainText
                            renderType: Text.NativeRendering
                            color: card.colors.faintText
                            font.pixelSize: Math.round(card.unit * 0.85)
                        }
                        Text {
                            visible: message.waitingCount > 0 && message.seconds >= 0
                            text: "\u00b7"
                            textFormat: Text.PlainText
                            renderType: Text.NativeRendering
                            color: card.colors.faintText
                            font.pixelSize: Math.round(card.unit * 0.85)
                        }
                        Text {
                            visible: message.seconds >= 0
                            text: look.secondsText
                            textFormat: Text.PlainText
                            renderType: Text.NativeRendering
                            color: card.colors.faintText
                            font.pixelSize: Math.round(card.unit * 0.85)
                        }
                    }
                }

                Text {
                    width: parent.width
                    visible: text !== ""
                    text: message.title
                    textFormat: Text.PlainText
                    renderType: Text.NativeRendering
                    color: card.colors.text
                    font { pixelSize: Math.round(card.unit * (card.isLarge ? 1.6 : 1.15)); bold: true }
                    horizontalAlignment: Text.AlignLeft
                    wrapMode: Text.Wrap
                    elide: Text.ElideRight
                    maximumLineCount: 3
                }
            }

            Button {
                id: closeButton

                anchors { right: parent.right; top: parent.top }
                isClose: true
                isArmed: message.isArmed
                label: look.closeText
                sheet: card
                onActivated: message.close()
            }
        }

        Flickable {
            id: scroll

            readonly property real minHeight: visible ? Math.min(body.height, 3 * card.unit) : 0

            width: parent.width
            // The text leaves room for the buttons, but keeps two lines.
            height: Math.min(body.height, Math.max(minHeight, card.room - buttonScroll.usedHeight))
            visible: message.text !== ""
            contentHeight: body.height
            clip: true
            interactive: contentHeight > height
            boundsBehavior: Flickable.StopAtBounds

            Connections {
                target: message
                function onShown() { scroll.contentY = 0 }
            }

            function move(distance) {
                glide.enabled = !look.reducedMotion
                contentY = Math.max(0, Math.min(contentHeight - height, contentY + distance))
                glide.enabled = false
            }

            Behavior on contentY {
                id: glide

                enabled: false
                NumberAnimation { duration: 150 }
            }

            Item {
                id: body

                readonly property bool isMixed: message.textParts.length > 1

                width: scroll.width
                height: isMixed ? parts.height : whole.height

                Text {
                    id: whole

                    width: parent.width
                    visible: !body.isMixed
                    text: body.isMixed ? "" : message.textParts[0] || ""
                    textFormat: message.styledText ? Text.StyledText : Text.PlainText
                    renderType: Text.NativeRendering
                    color: card.colors.text
                    font.pixelSize: Math.round(card.unit * (card.isLarge ? 1.25 : 1))
                    wrapMode: Text.Wrap
                }
                // Each part is aligned as its own direction demands.
                Column {
                    id: parts

                    width: parent.width

                    Repeater {
                        model: body.isMixed ? message.textParts.length : 0

                        Text {
                            width: parts.width
                            text: message.textParts[index] || ""
                            textFormat: whole.textFormat
                            renderType: Text.NativeRendering
                            color: whole.color
                            font: whole.font
                            wrapMode: Text.Wrap
                        }
                    }
                }
            }
        }

        Rectangle {
            id: meter

            readonly property real usedHeight: visible ? height + content.spacing : 0

            width: parent.width
            height: Math.round(card.unit * 0.5)
            visible: message.value >= 0
            color: card.colors.button
            border { width: 1; color: card.colors.border }
            Accessible.role: Accessible.ProgressBar
            // Qt gives screen readers no value of a progress bar.
            Accessible.name: visible ? look.valueText + " " + message.value + " %" : ""
            Accessible.ignored: message.value < 0

            Rectangle {
                anchors { left: parent.left; top: parent.top; bottom: parent.bottom; margins: 1 }
                width: Math.round((parent.width - 2) * Math.max(0, Math.min(100, message.value)) / 100)
                color: card.colors.accent
            }
        }

        Flickable {
            id: buttonScroll

            readonly property real usedHeight: visible ? buttons.height + content.spacing : 0

            width: parent.width
            height: Math.min(buttons.height, Math.max(3 * card.unit, card.room - content.spacing - scroll.minHeight))
            visible: message.actionLabels.length > 0
            contentHeight: buttons.height
            clip: true
            interactive: contentHeight > height
            boundsBehavior: Flickable.StopAtBounds

            function reveal(item) {
                contentY = Math.max(item.y + item.height - height, Math.min(contentY, item.y))
            }

            Flow {
                id: buttons

                width: parent.width
                spacing: Math.round(card.gap * 0.66)

                Repeater {
                    model: message.actionLabels.length

                    Button {
                        label: message.actionLabels[index] || ""
                        icon: message.actionIcons[index] || ""
                        maxWidth: buttons.width
                        isRow: message.isGroup
                        isArmed: message.isArmed
                        sheet: card
                        onActivated: message.activate(index)
                        onActiveFocusChanged: if (activeFocus) buttonScroll.reveal(this)
                    }
                }
            }
        }

        Loader {
            id: problem

            readonly property real usedHeight: active ? height + content.spacing : 0

            width: parent.width
            active: look.problem !== ""
            visible: active
            sourceComponent: Text {
                text: look.problem
                textFormat: Text.PlainText
                renderType: Text.NativeRendering
                color: card.colors.faintText
                font.pixelSize: Math.round(card.unit * 0.75)
                wrapMode: Text.Wrap
                elide: Text.ElideRight
                maximumLineCount: 3
            }
        }
    }

    ScrollMark { sheet: card; area: scroll }
    ScrollMark { sheet: card; area: buttonScroll }

    // Says that the message has the keyboard.
    Rectangle {
        anchors.fill: parent
        visible: card.activeFocus
        color: "transparent"
        border { width: Math.max(2, Math.round(card.unit * 0.15)); color: card.colors.focus }
    }
}
