// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/model/cmworker.h"

CMWorker::CMWorker(QObject *parent)
    : QObject(parent)
{
}

CMWorker::~CMWorker() = default;
