// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Quotas.h"
#include <core/tavo.h>

#include <QObject>

#include <cstddef>
#include <map>
#include <string>

class Clients;

/// Clients that do not want people to be disturbed while they do something. Each inhibition lasts until its
/// client ends it or leaves the bus. When all clients have too many, those of the user with the most end first.
///
/// Owned by the worker, used in its thread. The module for attention is told of them again when it is
/// loaded again.
class ClientInhibitions : public QObject
{
    Q_OBJECT

public:
    explicit ClientInhibitions(Clients &clients);

    /// Ends all of them.
    ~ClientInhibitions() override;

    /// Begins or ends one, whose id only this client knows. Its texts have this many bytes. Throws
    /// BusError::limitExceeded() for one too many.
    CMReply<QVariant> send(const std::string &client, const TavoAttentionInhibition &requested,
                           std::size_t bytes);

    bool has(const std::string &client, const QString &id) const
    {
        return m_inhibitions.count({client, id}) != 0;
    }

private Q_SLOTS:
    void on_clients_left(const std::string &client);
    void on_attention_nodeChanged(const CMPath &path, bool published);

private:
    struct Inhibition
    {
        TavoAttentionInhibition item;
        Quotas::Charge charge;
    };
    using Key = std::pair<std::string, QString>; ///< client and id

    void end(const Key &key);
    static CMReply<QVariant> tell(const TavoAttentionInhibition &item);

    Clients &m_clients;
    std::map<Key, Inhibition> m_inhibitions;
};
