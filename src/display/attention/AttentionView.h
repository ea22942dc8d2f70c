// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "display/attention/HistoryModel.h"
#include "display/DisplayConfiguration.h"
#include "display/view/Palette.h"

#include <QObject>

/// What the mark of do-not-disturb and the history show and do. For their QML files, in the configured
/// language.
class AttentionView : public QObject
{
    Q_OBJECT
    Q_PROPERTY(int textSize READ textSize NOTIFY changed)
    Q_PROPERTY(bool isMirrored READ isMirrored NOTIFY changed)
    Q_PROPERTY(Palette palette READ palette NOTIFY changed)
    Q_PROPERTY(bool isQuiet READ isQuiet NOTIFY changed)
    Q_PROPERTY(int missedCount READ missedCount NOTIFY changed)
    Q_PROPERTY(bool isOnlyMissed READ isOnlyMissed WRITE setOnlyMissed NOTIFY changed)
    Q_PROPERTY(HistoryModel *history READ history CONSTANT)
    Q_PROPERTY(QString markText READ markText NOTIFY changed)
    Q_PROPERTY(QString titleText READ titleText NOTIFY changed)
    Q_PROPERTY(QString closeText READ closeText NOTIFY changed)
    Q_PROPERTY(QString allText READ allText NOTIFY changed)
    Q_PROPERTY(QString missedText READ missedText NOTIFY changed)
    Q_PROPERTY(QString quietText READ quietText NOTIFY changed)
    Q_PROPERTY(QString emptyText READ emptyText NOTIFY changed)

public:
    explicit AttentionView(HostAttention &attention, QObject *parent = nullptr);

    void setConfiguration(const DisplayConfiguration &configuration);

    int textSize() const { return m_configuration.textSize; }
    bool isMirrored() const;
    Palette palette() const;
    bool isQuiet() const { return m_attention.doNotDisturb().on(); }
    int missedCount() const { return m_attention.missedCount(); }
    bool isOnlyMissed() const { return m_isOnlyMissed; }
    HistoryModel *history() { return &m_history; }
    QString markText() const; ///< for screen readers
    QString titleText() const;
    QString closeText() const;
    QString allText() const;
    QString missedText() const;
    QString quietText() const;
    QString emptyText() const; ///< instead of a list that is empty

    /// Reads the history from its newest entry on, and follows it.
    void open();
    /// Forgets it, and reports what was shown of it as seen.
    void close();

    void setOnlyMissed(bool isOnlyMissed);
    /// These rows of the history, and all between them, have been on the screen for a moment.
    Q_INVOKABLE void noteShown(int first, int last);
    Q_INVOKABLE void toggleQuiet();

Q_SIGNALS:
    void changed();
    /// A person asks for it. Emitted while a window handles an event.
    void historyRequested();
    void closeRequested();

private:
    /// Of the numbers of notifications.
    struct Range
    {
        qint64 first;
        qint64 last;
    };

    HostAttention &m_attention;
    HistoryModel m_history;
    DisplayConfiguration m_configuration;
    bool m_isOnlyMissed = false;
    QVector<Range> m_shown; ///< what was on the screen since the history was opened
};
