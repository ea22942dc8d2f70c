// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <log4cplus/appender.h>

/// Whether standard error is the stream to the journal that systemd has given to this process. A line in it
/// may begin with its level.
bool goesToJournal();

/// Writes records to the journal with their level, logger, module, thread and place in the source as fields.
/// A program that can't reach the journal's socket, such as one with a root folder of its own, writes them to
/// standard error, as lines that begin with their level.
log4cplus::SharedAppenderPtr makeJournalAppender();
