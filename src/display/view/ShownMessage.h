// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "display/message/MessageSource.h"
#include "display/view/Countdown.h"

#include <QObject>
#include <QStringList>
#include <QTimer>
#include <QVariantList>

/// The message on the screen, for themes. All texts are limited, and plain but for styledText.
///
/// For armDelayMs after a message has come on the screen, its buttons do nothing: nobody shall press
/// what has just taken the place of something else. The same holds when the buttons change.
class ShownMessage : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString title READ title NOTIFY messageChanged)
    Q_PROPERTY(QString text READ text NOTIFY messageChanged)
    Q_PROPERTY(QString styledText READ styledText NOTIFY messageChanged)
    Q_PROPERTY(QStringList textParts READ textParts NOTIFY messageChanged)
    Q_PROPERTY(bool isGroup READ isGroup NOTIFY messageChanged)
    Q_PROPERTY(QString application READ application NOTIFY messageChanged)
    Q_PROPERTY(QString picture READ picture NOTIFY messageChanged)
    Q_PROPERTY(int value READ value NOTIFY messageChanged)
    Q_PROPERTY(QStringList actionLabels READ actionLabels NOTIFY messageChanged)
    Q_PROPERTY(QStringList actionIcons READ actionIcons NOTIFY messageChanged)
    Q_PROPERTY(bool hasDefaultAction READ hasDefaultAction NOTIFY messageChanged)
    Q_PROPERTY(int priority READ priority NOTIFY messageChanged)
    Q_PROPERTY(int seconds READ seconds NOTIFY secondsChanged)
    Q_PROPERTY(int waitingCount READ waitingCount NOTIFY waitingCountChanged)
    Q_PROPERTY(bool isArmed READ isArmed NOTIFY armedChanged)

public:
    static constexpr int armDelayMs = 500;

    explicit ShownMessage(MessageSource *source, QObject *parent = nullptr);

    bool isShown() const { return m_isShown; }
    QString title() const { return m_message.title; }
    QString text() const { return m_message.text; }
    QString styledText() const { return m_message.styled; }
    /// Of the styled text, if there is one.
    QStringList textParts() const { return m_textParts; }
    bool isGroup() const { return m_message.isGroup; }
    QString application() const { return m_message.application; }
    /// A URL for an image item; empty if there is no picture. Another one for each picture.
    QString picture() const;
    int value() const { return m_message.value; }
    QStringList actionLabels() const;
    QStringList actionIcons() const;
    bool hasDefaultAction() const { return !m_message.defaultAction.isEmpty(); }
    int priority() const { return m_head.priority; }
    int seconds() const { return m_countdown.seconds(); }
    int waitingCount() const { return m_head.waitingCount; }
    bool isArmed() const { return m_isShown && !m_armTimer.isActive(); }

    // What a person does. Nothing happens while the buttons are not armed.
    Q_INVOKABLE void close();
    Q_INVOKABLE void activate(int action);
    Q_INVOKABLE void activateDefault();

Q_SIGNALS:
    void messageChanged();
    void secondsChanged();
    void waitingCountChanged();
    void armedChanged();

    /// Emitted before messageChanged().
    void pictureChanged(const Picture &picture);

    /// Nothing is on the screen, and a message is on its way; shown() or hidden() follows.
    void expected();
    /// Emitted before the message on the screen gives way to another one or to none.
    void ended();
    /// Another message is on the screen.
    void shown();
    /// All of it is on the screen. Emitted once for each message, after shown(), and again whenever its title or
    /// text changes, unless it shows a progress: that may change all the time.
    void completed();
    void hidden();

private Q_SLOTS:
    void on_source_shown(const Head &head, const Message &message);
    void on_source_messageChanged(const Message &message);
    void on_source_waitingChanged(int count);
    void on_source_emptied();

private:
    void setMessage(const Message &message);

    MessageSource &m_source;
    Head m_head;
    Message m_message;
    QStringList m_textParts;
    bool m_isShown = false;
    int m_pictureNumber = 0;
    Countdown m_countdown;
    QTimer m_armTimer;
};
