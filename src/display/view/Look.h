// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "display/DisplayConfiguration.h"
#include "display/view/Palette.h"
#include "display/view/ShownMessage.h"

#include <QObject>

/// How the message on the screen looks, for themes: sizes, colours, and the texts of the display itself in
/// the configured language.
class Look : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString mode READ mode NOTIFY changed)
    Q_PROPERTY(int textSize READ textSize NOTIFY changed)
    Q_PROPERTY(qreal maxHeight READ maxHeight NOTIFY changed)
    Q_PROPERTY(qreal pixelRatio READ pixelRatio NOTIFY changed)
    Q_PROPERTY(bool isMirrored READ isMirrored NOTIFY changed)
    Q_PROPERTY(bool reducedMotion READ reducedMotion NOTIFY changed)
    Q_PROPERTY(QString problem READ problem NOTIFY changed)
    Q_PROPERTY(Palette palette READ palette NOTIFY paletteChanged)
    Q_PROPERTY(QString closeText READ closeText NOTIFY changed)
    Q_PROPERTY(QString valueText READ valueText NOTIFY changed)
    Q_PROPERTY(QString secondsText READ secondsText NOTIFY secondsTextChanged)
    Q_PROPERTY(QString waitingText READ waitingText NOTIFY waitingTextChanged)
    Q_PROPERTY(QString spokenText READ spokenText NOTIFY spokenTextChanged)

public:
    explicit Look(const ShownMessage &message, QObject *parent = nullptr);

    void setConfiguration(const DisplayConfiguration &configuration);
    void setScreen(qreal maxHeight, qreal pixelRatio);
    /// What is wrong with the theme; empty if nothing is.
    void setProblem(const QString &problem);

    QString mode() const { return m_configuration.modeName(); }
    int textSize() const { return m_configuration.textSize; }
    qreal maxHeight() const { return m_maxHeight; }
    qreal pixelRatio() const { return m_pixelRatio; }
    bool isMirrored() const;
    bool reducedMotion() const { return m_configuration.reducedMotion; }
    QString problem() const { return m_problem; }
    Palette palette() const;
    QString closeText() const;
    QString valueText() const;
    QString secondsText() const;
    QString waitingText() const;
    /// For screen readers: the text of the message, after what is seen beside it and before how long it stays. Does
    /// not follow the countdown.
    QString spokenText() const;

Q_SIGNALS:
    void changed();
    void paletteChanged();
    void secondsTextChanged();
    void waitingTextChanged();
    void spokenTextChanged();

private Q_SLOTS:
    void on_message_changed();

private:
    void emitAll();

    const ShownMessage &m_message;
    DisplayConfiguration m_configuration;
    int m_priority = 0; ///< that the palette has been reported for
    qreal m_maxHeight = 0;
    qreal m_pixelRatio = 1;
    QString m_problem;
};
