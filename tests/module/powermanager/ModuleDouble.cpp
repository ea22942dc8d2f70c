// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "module/powermanager/ModuleDouble.h"

#include <utility>

ModuleDouble::ModuleDouble(const QString &name, Journal *journal, Manner manner)
    : CMNodesWorker({}, name)
    , m_journal(journal)
    , m_manner(manner)
{
    CMActivateNode::create(nodes(), revokePath())
        ->setInvoke(this, &ModuleDouble::on_revoke_activated, Qt::QueuedConnection);
    CMActivateNode::create(nodes(), postRevokePath())
        ->setInvoke(this, &ModuleDouble::on_postRevoke_activated, Qt::QueuedConnection);
}

CMPath ModuleDouble::revokePath() const
{
    return CMPath("/test") + name() + "revoke";
}

CMPath ModuleDouble::postRevokePath() const
{
    return CMPath("/test") + name() + "postRevoke";
}

TavoPowerManagerModuleRegister ModuleDouble::registration() const
{
    return TavoPowerManagerModuleRegister()
        .setModuleName(name())
        .setRevokeResourcesPath(revokePath())
        .setPostRevokeResourcesPath(postRevokePath());
}

void ModuleDouble::answer()
{
    for (const CMReply<QVariant> &reply : std::exchange(m_openReplies, {})) {
        reply.setValue(QVariant());
    }
}

void ModuleDouble::on_revoke_activated(const CMSetDataRequest &request)
{
    note("revoked", request);
    switch (m_manner) {
    case Manner::Answers:
        request.reply().setValue(QVariant());
        return;
    case Manner::Refuses:
        request.reply().setError(CMError("Test", "Not now"));
        return;
    case Manner::StaysSilent:
        m_openReplies.append(request.reply());
        return;
    }
}

void ModuleDouble::on_postRevoke_activated(const CMSetDataRequest &request)
{
    note("notice", request);
    request.reply().setValue(QVariant());
}

void ModuleDouble::note(const std::string &what, const CMSetDataRequest &request)
{
    const TavoPowerManagerRevokeMessage message(request.value().toHash());
    const bool isNotice = message.messageType() == TavoPowerManagerRevokeMessageType::PostRevoked;
    std::string entry = name().toStdString() + ' ' + what;
    for (int i = 0; i < message.revokeResources().size(); ++i) {
        entry += ' ' + std::to_string(message.revokeResources().at(i));
    }
    // The message's type must match the path it was sent to.
    m_journal->push_back(isNotice == (what == "notice") ? entry : entry + " of a wrong type");
}
