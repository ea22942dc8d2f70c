// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "support/broker/Certificates.h"

#include <QProcess>
#include <QUuid>

#include <stdexcept>

namespace {
void openssl(const QStringList &arguments)
{
    constexpr int timeoutMs = 30000;
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(QStringLiteral("openssl"), arguments);
    if (!process.waitForFinished(timeoutMs) || process.exitStatus() != QProcess::NormalExit ||
        process.exitCode() != 0) {
        throw std::runtime_error("openssl failed: " + process.readAll().toStdString());
    }
}

/// Elliptic curves: their keys are made in milliseconds.
const QStringList newKey{"-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes"};
} // namespace

Certificates::Certificates()
{
    openssl(QStringList{"req", "-x509"} + newKey +
            QStringList{"-days", QString::number(valid), "-subj", "/CN=Authority of the tests",
                        "-addext", "basicConstraints=critical,CA:TRUE", "-keyout", file("ca.key"),
                        "-out", authority()});
}

Identity Certificates::make(const QString &commonName, const QStringList &hosts, int days) const
{
    const Identity identity{file(commonName + ".crt"), file(commonName + ".key")};
    const QString request = file(commonName + ".csr");
    QStringList arguments = QStringList{"req", "-new"} + newKey;
    arguments << "-subj"
              << "/CN=" + commonName << "-addext"
              << "basicConstraints=critical,CA:FALSE"
              << "-keyout" << identity.key << "-out" << request;
    if (!hosts.isEmpty()) {
        arguments << "-addext"
                  << "subjectAltName=" + hosts.join(',');
    }
    openssl(arguments);
    const QString number = QUuid::createUuid().toString(QUuid::Id128).left(16);
    openssl({"x509", "-req", "-in", request, "-CA", authority(), "-CAkey", file("ca.key"), "-days",
             QString::number(days), "-copy_extensions", "copyall", "-set_serial", "0x7" + number,
             "-out", identity.certificate});
    return identity;
}
