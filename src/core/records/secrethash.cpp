// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "core/records/secrethash.h"

#include <QRandomGenerator>

#include <cstring>

namespace {
struct Key
{
    quint64 first = 0;
    quint64 second = 0;
};

const Key &key()
{
    static const Key key = [] {
        if (qEnvironmentVariableIsSet("QT_HASH_SEED")) {
            return Key();
        }
        QRandomGenerator *random = QRandomGenerator::system();
        return Key{random->generate64(), random->generate64()};
    }();
    return key;
}

quint64 rotated(quint64 word, int bits)
{
    return word << bits | word >> (64 - bits);
}

class State
{
public:
    explicit State(const Key &key)
        : m_v0(key.first ^ 0x736f6d6570736575U)
        , m_v1(key.second ^ 0x646f72616e646f6dU)
        , m_v2(key.first ^ 0x6c7967656e657261U)
        , m_v3(key.second ^ 0x7465646279746573U)
    {
    }

    void add(quint64 word)
    {
        m_v3 ^= word;
        mix();
        m_v0 ^= word;
    }

    quint64 finish()
    {
        m_v2 ^= 0xff;
        mix();
        mix();
        mix();
        return m_v0 ^ m_v1 ^ m_v2 ^ m_v3;
    }

private:
    void mix()
    {
        m_v0 += m_v1;
        m_v2 += m_v3;
        m_v1 = rotated(m_v1, 13) ^ m_v0;
        m_v3 = rotated(m_v3, 16) ^ m_v2;
        m_v0 = rotated(m_v0, 32) + m_v3;
        m_v2 += m_v1;
        m_v1 = rotated(m_v1, 17) ^ m_v2;
        m_v3 = rotated(m_v3, 21) ^ m_v0;
        m_v2 = rotated(m_v2, 32);
    }

    quint64 m_v0;
    quint64 m_v1;
    quint64 m_v2;
    quint64 m_v3;
};
} // namespace

uint cmSecretHash(QStringView text)
{
    constexpr int charactersPerWord = sizeof(quint64) / sizeof(QChar);
    State state(key());
    const QChar *next = text.data();
    const QChar *const end = next + text.size();
    for (; end - next >= charactersPerWord; next += charactersPerWord) {
        quint64 word = 0;
        std::memcpy(&word, next, sizeof(word));
        state.add(word);
    }
    // Without the length, texts that differ only in trailing null characters would have equal
    // hashes.
    auto last = quint64(text.size());
    for (; next != end; ++next) {
        last = last << 16 | next->unicode();
    }
    state.add(last);
    return uint(state.finish());
}
