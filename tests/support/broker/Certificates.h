// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>
#include <QStringList>
#include <QTemporaryDir>

/// A certificate and its key: files in PEM.
struct Identity
{
    QString certificate;
    QString key;
};

/// A certificate authority of its own, and what it has signed, in a temporary folder. Made with the
/// program openssl. The functions throw when it fails.
class Certificates
{
public:
    static constexpr int valid = 30;
    static constexpr int expired = -1;

    Certificates();
    Certificates(const Certificates &) = delete;
    Certificates &operator=(const Certificates &) = delete;

    /// The certificate of the authority.
    QString authority() const { return file(QStringLiteral("ca.crt")); }

    /// Makes a certificate for this common name. Servers need the names and addresses that clients
    /// reach them by, as "DNS:localhost" and "IP:127.0.0.1". An identity of that name is replaced.
    Identity make(const QString &commonName, const QStringList &hosts = {}, int days = valid) const;

    /// Makes a server's certificate for localhost and 127.0.0.1.
    Identity makeServer(int days = valid) const
    {
        return make(QStringLiteral("localhost"),
                    {QStringLiteral("DNS:localhost"), QStringLiteral("IP:127.0.0.1")}, days);
    }

    QString file(const QString &name) const { return m_folder.filePath(name); }

private:
    QTemporaryDir m_folder;
};
