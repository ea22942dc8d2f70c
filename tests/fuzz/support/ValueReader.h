// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "fuzz/support/ByteReader.h"
#include "fuzz/support/Dictionary.h"

#include <QVariant>

#include <functional>

/// Reads values from an input: any type, depth and size, also wrong types where records expect
/// others. Limits each input, so time and memory stay bounded.
class ValueReader
{
public:
    /// Far more levels than any interface of the process accepts.
    static constexpr int maxLevels = 10000;

    explicit ValueReader(ByteReader &input)
        : m_input(input)
    {
    }

    /// Provides values that an input can't know. The number chooses one.
    void setKnown(std::function<QVariant(int)> known) { m_known = std::move(known); }

    QVariant value() { return value(0); }
    QString text();
    QVariantHash record(FuzzRecord kind) { return record(kind, 0); }

private:
    QVariant value(int depth);
    QVariant scalar(int tag);
    QVariant container(int tag, int depth);
    QVariant oddDouble();
    QVariantList copies();
    QVariantList list(int count, int depth);
    QVariantHash hash(int depth);
    QVariantHash record(FuzzRecord kind, int depth);
    QVariant suitable(const FuzzFieldOf &field, int depth);
    QVariant translatable();
    QVariant nested(int depth);
    QVariant translated();
    QVariant foreign();
    int count();

    ByteReader &m_input;
    std::function<QVariant(int)> m_known;
    int m_valuesLeft = 4000;
    int m_charactersLeft = 1 << 18;
    int m_levelsLeft = maxLevels;
};
