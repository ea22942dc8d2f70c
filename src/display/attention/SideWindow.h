// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "display/DisplayConfiguration.h"
#include "display/platform/Placement.h"

#include <QObject>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>

#include <memory>

/// A window beside that of the messages. It exists on the platform only while it is shown. Its QML file is
/// loaded the first time.
class SideWindow : public QObject
{
    Q_OBJECT

public:
    enum class Kind {
        Mark, ///< small, in the corner above or below that of the messages; never has the keyboard
        View, ///< in the middle of the screen; a person has opened it and gets the keyboard for it
    };

    SideWindow(QQmlEngine &engine, Kind kind, const QUrl &file, QObject *parent = nullptr);
    ~SideWindow() override;

    /// May be called again while the window is shown.
    void setConfiguration(const DisplayConfiguration &configuration);

    /// Shows it, or gives it the keyboard if it is shown already.
    void show();
    /// Not from within an event that the window handles.
    void hide();
    bool isShown() const { return m_window != nullptr; }

Q_SIGNALS:
    /// The window manager has closed it.
    void closed();

private Q_SLOTS:
    void on_screens_changed();
    void on_item_implicitWidthChanged();

private:
    void place();

    QQmlEngine &m_engine;
    const Kind m_kind;
    const QUrl m_file;
    DisplayConfiguration m_configuration;
    std::unique_ptr<Placement> m_placement;
    std::unique_ptr<QQuickWindow> m_window;
    std::unique_ptr<QQuickItem> m_item;
};
