// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QObject>

/// A type that is not registered for queued calls.
struct UnknownToTheMetaTypes
{
};

class Speaker : public QObject
{
    Q_OBJECT

Q_SIGNALS:
    void number(int value);
    void unknown(const UnknownToTheMetaTypes &value);
    void pointer(UnknownToTheMetaTypes *value);
};
