// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "explorer/sound/SoundServices.h"

#include <algorithm>

namespace {
using Kind = SoundFacts::Request;

const char *nameOf(Kind kind)
{
    switch (kind) {
    case Kind::Duck:
        return "duck";
    case Kind::Unduck:
        return "unduck";
    case Kind::Acquire:
        return "acquire";
    case Kind::None:
        break;
    }
    return "nothing";
}
} // namespace

SoundServices::SoundServices(SoundJudge *judge, SoundFacts *facts)
    : CMNodesWorker(QVariantHash(), QStringLiteral("Services"))
    , m_judge(judge)
    , m_facts(facts)
{
    const auto take = [this](const CMPath &path,
                             void (SoundServices::*slot)(const CMSetDataRequest &)) {
        CMActivateNode::create(nodes(), path)->setInvoke(this, slot, Qt::DirectConnection);
    };
    take(TavoPlayerMainAudioDuckingPath(), &SoundServices::on_ducking);
    take(TavoPowerManagerResourceRequestPath(), &SoundServices::on_resource);
    take(TavoPowerManagerModuleRegisterPath(), &SoundServices::on_registration);
    take(responsePath(), &SoundServices::on_response);
}

CMPath SoundServices::responsePath()
{
    static const CMPath path(QStringLiteral("/explorer/response"));
    return path;
}

void SoundServices::clear()
{
    m_outstanding = CMSetDataRequest();
}

void SoundServices::on_registration(const CMSetDataRequest &request)
{
    request.reply().setValue(QVariant());
}

void SoundServices::on_ducking(const CMSetDataRequest &request)
{
    const bool duck = TavoPlayerAudioDuckingRequest(request.value().toHash()).duckAudio();
    if (duck == m_facts->duckAsked) {
        m_judge->broken("duck and unduck alternate", duck ? "a second duck" : "a second unduck");
    }
    m_facts->duckAsked = duck;
    if (!duck) {
        m_facts->ducked = false;
    }
    take(duck ? Kind::Duck : Kind::Unduck, request);
}

void SoundServices::on_resource(const CMSetDataRequest &request)
{
    const TavoPowerManagerResourceRequest record(request.value().toHash());
    if (record.action() == TavoPowerModuleActions::Acquire) {
        acquire(request);
    } else {
        release(request);
    }
}

void SoundServices::acquire(const CMSetDataRequest &request)
{
    if (m_facts->granted) {
        m_judge->broken("the resource is acquired only when it is not held");
    }
    if (!m_facts->ducked) {
        m_judge->broken("the resource is acquired only over ducked main audio");
    }
    take(Kind::Acquire, request);
}

void SoundServices::release(const CMSetDataRequest &request)
{
    m_judge->tell("the resource is released");
    if (!m_facts->granted) {
        m_judge->broken("a release comes only after a granted acquire");
    }
    m_facts->granted = false;
    request.reply().setValue(QVariant());
}

void SoundServices::take(Kind kind, const CMSetDataRequest &request)
{
    if (m_facts->outstanding != Kind::None) {
        m_judge->broken("at most one request of the audio sequence is outstanding",
                        std::string(nameOf(kind)) + " while " + nameOf(m_facts->outstanding) +
                            " is outstanding");
    }
    m_facts->outstanding = kind;
    enum { Later, SucceedsAtOnce, FailsAtOnce, Alternatives };
    const int decision = m_judge->decide(Alternatives);
    if (decision == Later) {
        m_judge->tell(std::string(nameOf(kind)) + " is asked for");
        m_outstanding = request;
        return;
    }
    m_judge->tell(std::string(nameOf(kind)) + " is asked for and " +
                  (decision == SucceedsAtOnce ? "granted" : "refused") + " at once");
    giveAnswer(kind, request, decision == SucceedsAtOnce);
}

void SoundServices::answer(bool success)
{
    m_judge->tell(std::string(nameOf(m_facts->outstanding)) + " is " +
                  (success ? "granted" : "refused"));
    const CMSetDataRequest request = m_outstanding;
    m_outstanding = CMSetDataRequest();
    giveAnswer(m_facts->outstanding, request, success);
}

void SoundServices::answerTooLate()
{
    if (m_facts->outstanding != Kind::None) {
        m_outstanding.reply().setValue(QVariant());
    }
}

void SoundServices::giveAnswer(Kind kind, const CMSetDataRequest &request, bool success)
{
    m_facts->outstanding = Kind::None;
    if (kind == Kind::Duck) {
        m_facts->ducked = true; // the module must take even an error for that
    } else if (kind == Kind::Acquire) {
        m_facts->granted = success;
        m_facts->refused = !success;
        m_facts->checkIfEmpty();
        if (!success) {
            m_facts->cancelAll();
            m_facts->checkIfEmpty();
        }
    }
    if (success) {
        request.reply().setValue(QVariant());
    } else {
        request.reply().setError(CMError(QStringLiteral("Explorer"), "no"));
    }
}

void SoundServices::on_response(const CMSetDataRequest &request)
{
    using Type = TavoNotificationPlayerResponseType;
    const TavoNotificationPlayerResponse response =
        TavoValue(request.value().toHash()).notificationPlayerResponse();
    request.reply().setValue(QVariant());
    const int id = response.id().isEmpty() ? -1 : response.id().at(0).unicode() - 'a';
    const std::string name = response.id().toStdString();
    m_judge->tell(name + " is " + Type::toString(response.type()).toLower().toStdString());

    SoundItem *item = m_facts->ledger.find(id);
    const auto owed = std::find_if(m_facts->owed.begin(), m_facts->owed.end(),
                                   [id](const OwedResponse &each) { return each.id == id; });
    if (response.type() == Type::Started) {
        if (item == nullptr || item->started || !item->sounding) {
            m_judge->broken(
                "a started response comes only after the start and before the end, and once");
        } else {
            item->started = true;
        }
        return;
    }
    if (owed == m_facts->owed.end() && item != nullptr && !item->valid &&
        m_facts->ledger.isHead(id) && m_facts->granted && response.type() == Type::Failed) {
        // It was taken from the queue, but no player plays its type.
        m_facts->taken = true;
        m_facts->ledger.remove(id);
        m_facts->checkIfEmpty();
        return;
    }
    if (owed == m_facts->owed.end()) {
        m_judge->broken("an end response comes only when the item ends, and once",
                        name + " was said to have ended");
        return;
    }
    if (owed->type != response.type()) {
        m_judge->broken("an end response says how the item ended",
                        name + " was said to be " + Type::toString(response.type()).toStdString() +
                            " instead of " + Type::toString(owed->type).toStdString());
    }
    m_facts->owed.erase(owed);
}
