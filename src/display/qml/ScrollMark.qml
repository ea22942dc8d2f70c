// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

import QtQuick 2.15

// In the margin beside an area that can be scrolled: which part of it is seen.
Rectangle {
    property var sheet
    property Flickable area

    anchors { right: parent.right; rightMargin: width }
    y: area.parent.y + area.y + Math.round(area.visibleArea.yPosition * area.height)
    width: Math.round(sheet.gap / 3)
    height: Math.round(area.visibleArea.heightRatio * area.height)
    visible: area.visible && area.interactive
    radius: width / 2
    color: sheet.colors.faintText
}
