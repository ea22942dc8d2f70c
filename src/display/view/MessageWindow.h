// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "display/DisplayConfiguration.h"
#include "display/platform/FocusKey.h"
#include "display/platform/Placement.h"
#include "display/view/Look.h"
#include "display/view/ScreenReaders.h"
#include "display/view/ShownMessage.h"

#include <QObject>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTimer>

#include <memory>

class PictureProvider;

/// The window with the message on the screen. While there is none, a window that is not on the screen waits
/// for the next one, where a window can change its size; elsewhere there is none.
class MessageWindow : public QObject
{
    Q_OBJECT

public:
    explicit MessageWindow(ShownMessage *message, QObject *parent = nullptr);
    ~MessageWindow() override;

    /// May be called again, with a message on the screen.
    void setConfiguration(const DisplayConfiguration &configuration);

    QQmlEngine &engine() { return m_engine; }

    bool eventFilter(QObject *watched, QEvent *event) override;

private Q_SLOTS:
    void on_message_expected();
    void on_message_shown();
    void on_message_hidden();
    void on_message_pictureChanged(const Picture &picture);
    void on_card_implicitHeightChanged();
    void recreate();
    void on_screens_changed();
    void on_engine_warnings(const QList<QQmlError> &warnings);

private:
    void loadTheme();
    void prepareWindow();
    void reportTheme(const QString &problem);
    bool makeWindow(int priority);
    void show();
    void putOnScreen();
    void draw();
    void endFocus();
    void destroyWindow();
    void followScreen(QScreen *screen);
    void measure(const QScreen &screen);
    void place();
    void announce();

    ShownMessage &m_message;
    DisplayConfiguration m_configuration;
    std::unique_ptr<Placement> m_placement;
    std::unique_ptr<FocusKey> m_focusKey; ///< null on platforms that need none
    Look m_look;
    QQmlEngine m_engine;
    PictureProvider *m_pictures; ///< owned by the engine
    ScreenReaders m_screenReaders;
    std::unique_ptr<QQuickWindow> m_window;
    std::unique_ptr<QQuickItem> m_card;
    QString m_loadedTheme;
    bool m_isOpen = false; ///< the window has the message
    QPointer<QScreen> m_screen;
    bool m_wasUrgent = false;
    QTimer m_recreateTimer;
    QTimer m_expectedTimer; ///< runs while the window is on the screen without a message
};
