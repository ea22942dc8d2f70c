// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <core/tavo.h>

#include <string>
#include <vector>

/// A module for the power manager. It records the messages that it receives as "<name> revoked 2"
/// and "<name> notice 2", in a journal that several modules can share.
class ModuleDouble : public CMNodesWorker
{
    Q_OBJECT

public:
    enum class Manner { Answers, Refuses, StaysSilent };
    using Journal = std::vector<std::string>;

    ModuleDouble(const QString &name, Journal *journal, Manner manner = Manner::Answers);

    CMPath revokePath() const;
    CMPath postRevokePath() const;
    TavoPowerManagerModuleRegister registration() const;

    /// Answers the requests that a silent module has left open.
    void answer();

private Q_SLOTS:
    void on_revoke_activated(const CMSetDataRequest &request);
    void on_postRevoke_activated(const CMSetDataRequest &request);

private:
    void note(const std::string &what, const CMSetDataRequest &request);

    Journal *m_journal;
    Manner m_manner;
    QList<CMReply<QVariant>> m_openReplies;
};
