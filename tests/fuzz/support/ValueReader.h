// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "fuzz/support/ByteReader.h"
#include "fuzz/support/Dictionary.h"

#include <QVariant>

#include <functional>

/// Makes values of an input: any type, any nesting, any size, wrong types where records expect
/// others. Each input may make only so much of it, so that time and memory stay bounded.
class ValueReader
{
public:
    /// 10,000 levels are far more than any door into the process lets in.
    static constexpr int mostLevels = 10000;

    explicit ValueReader(ByteReader &input)
        : m_input(input)
    {
    }

    /// Where the values come from that an input can't know; the number says which.
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
    int m_levelsLeft = mostLevels;
};
