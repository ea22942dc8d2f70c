// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <core/tavo.h>

#include <string>
#include <vector>

/// A module that registers with the power manager and takes down, in a journal that several may
/// share, what it is told: "<name> revoked 2" and "<name> notice 2".
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

    /// Gives the answers that a silent one owes.
    void answer();

private Q_SLOTS:
    void on_revoke_activated(const CMSetDataRequest &request);
    void on_postRevoke_activated(const CMSetDataRequest &request);

private:
    void note(const std::string &what, const CMSetDataRequest &request);

    Journal *m_journal;
    Manner m_manner;
    QList<CMReply<QVariant>> m_owed;
};
