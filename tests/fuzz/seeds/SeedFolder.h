// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QString>

#include <stdexcept>

/// The folder with the seeds of a fuzzer.
class SeedFolder
{
public:
    SeedFolder(const QString &corpus, const char *fuzzer)
        : m_folder(corpus + QLatin1Char('/') + QLatin1String(fuzzer))
    {
        m_folder.mkpath(QStringLiteral("."));
    }

    QString path(const QByteArray &name) const
    {
        return m_folder.filePath(QString::fromLatin1(name));
    }

    void write(const QByteArray &name, const QByteArray &bytes) const
    {
        QFile file(path(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
            throw std::runtime_error("can't write " + file.fileName().toStdString());
        }
    }

private:
    QDir m_folder;
};
