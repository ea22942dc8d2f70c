// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

#include <QByteArray>
#include <QString>

/// What introspection data say of one interface, a member a line, in the order of the lines: to
/// compare two of them that differ in comments and order. Throws for what is no such XML.
std::vector<std::string> membersOf(const QByteArray &xml, const QString &interface);

/// The same of a file.
std::vector<std::string> membersOfFile(const QString &file, const QString &interface);
