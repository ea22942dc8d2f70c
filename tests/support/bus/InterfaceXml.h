// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>
#include <QString>

#include <string>
#include <vector>

/// The members of one interface in introspection XML, one line each, sorted: two files can be compared
/// that differ in comments and order. Throws when the XML is malformed.
std::vector<std::string> membersOf(const QByteArray &xml, const QString &interface);

/// The same of a file.
std::vector<std::string> membersOfFile(const QString &file, const QString &interface);
