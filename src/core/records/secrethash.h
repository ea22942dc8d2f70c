// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QStringView>

/// A hash of texts that other programs choose: SipHash-1-3 with a random key for each process, so that
/// nobody can find texts with equal hashes. Called from any thread.
///
/// A seed for qHash() would not help: texts whose hashes are equal with one seed have equal hashes with
/// every other.
///
/// If QT_HASH_SEED is set, the key is the same in every process, for repeatable measurements.
uint cmSecretHash(QStringView text);
