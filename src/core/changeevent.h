// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/model/changenotifier.h"

#include <QEvent>

/// A change on its way to one notifier.
class ChangeEvent : public QEvent
{
public:
    static QEvent::Type eventType()
    {
        static const int type = QEvent::registerEventType();
        return QEvent::Type(type);
    }

    ChangeEvent()
        : QEvent(eventType())
    {
    }

    virtual void emitFrom(ChangeNotifier *notifier) const = 0;
};

class RowsChangeEvent : public ChangeEvent
{
public:
    RowsChangeEvent(QStringList changes, int first, int count)
        : m_changes(std::move(changes))
        , m_first(first)
        , m_count(count)
    {
    }
    void emitFrom(ChangeNotifier *notifier) const override;

private:
    QStringList m_changes;
    int m_first;
    int m_count;
};

class ValueChangeEvent : public ChangeEvent
{
public:
    explicit ValueChangeEvent(QVariant value)
        : m_value(std::move(value))
    {
    }
    void emitFrom(ChangeNotifier *notifier) const override;

private:
    QVariant m_value;
};

class NodeChangeEvent : public ChangeEvent
{
public:
    explicit NodeChangeEvent(bool published)
        : m_published(published)
    {
    }
    void emitFrom(ChangeNotifier *notifier) const override;

private:
    bool m_published;
};
