// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/base/export.h"

#include <QObject>

class CMRequest;

/// The base of all workers, which take requests from the model.
///
/// Lives in the thread that made it, which must run a Qt event loop. Owned by the host.
class TAVO_API_EXPORT CMWorker : public QObject
{
    Q_OBJECT

public:
    /// Called by derived classes, in the thread in which the worker lives.
    explicit CMWorker(QObject *parent = nullptr);
    ~CMWorker() override;

    /// Takes a request of any kind and makes sure that it is answered. Called from any thread.
    virtual void request(CMRequest request) = 0;
};
