// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// Sequences of requests to the power manager's nodes. Modules answer a revoke, refuse it, or do not
// reply; one of them is the power manager itself.

#include "fuzz/support/Fuzz.h"
#include "fuzz/support/SentRequest.h"
#include "fuzz/support/ValueReader.h"
#include "support/LoadedModule.h"
#include "support/PostedEvents.h"
#include "support/scripted/ScriptedService.h"

#include <QTimer>

namespace {
constexpr int maxSteps = 200;

const CMPath &modulePath()
{
    static const CMPath path(QStringLiteral("/own/node"));
    return path;
}

class FuzzedPowerManager
{
public:
    FuzzedPowerManager()
        : m_services(QStringLiteral("Services"))
        , m_module(QStringLiteral(TAVO_POWERMANAGER_MODULE), "powermanager")
    {
        m_services.take(modulePath(), ScriptedService::accept());
        deliverPosted();
        checkState();
    }

    void request(int node, const QVariant &value)
    {
        const CMPath paths[] = {TavoPowerManagerModuleRegisterPath(),
                                TavoPowerManagerResourceRequestPath(),
                                TavoPowerManagerStandbyPath(), TavoPowerManagerResumePath()};
        const CMPath &path = paths[node];
        const QVariant before = CMRoot()->getValue(TavoPowerManagerStatePath());
        const SentRequest sent(path, value);
        deliverPosted();
        checkState();
        m_sent.push_back(sent);
        if (path == TavoPowerManagerStandbyPath()) {
            return; // answered when the holders have stopped, or refused by a resume
        }
        sent.checkAnswered();
        if (sent.isRefused()) {
            FUZZ_CHECK(CMRoot()->getValue(TavoPowerManagerStatePath()) == before,
                       "a refused request has changed the state");
        }
    }

    void setAnswer(int script)
    {
        m_services.setScript(modulePath(), [this, script](const CMSetDataRequest &request) {
            if (script == 0) {
                request.reply().setValue(QVariant());
            } else if (script == 1) {
                ScriptedService::refuse(QStringLiteral("no"))(request);
            } else {
                m_kept.append(request);
            }
        });
    }

    void answerKept()
    {
        for (const CMSetDataRequest &request : std::exchange(m_kept, {})) {
            request.reply().setValue(QVariant());
        }
        deliverPosted();
        checkState();
    }

    void setModuleNode(bool published)
    {
        if (published == m_published) {
            return;
        }
        m_published = published;
        if (published) {
            m_services.take(modulePath(), ScriptedService::accept());
        } else {
            m_services.withdraw(modulePath());
        }
        deliverPosted();
        checkState();
    }

    void fireTimer()
    {
        const auto timers = m_module.worker()->findChildren<QTimer *>();
        for (QTimer *timer : timers) {
            timer->stop();
            QMetaObject::invokeMethod(timer, "timeout");
            deliverPosted();
        }
        checkState();
    }

    /// A module that does not reply delays standby only up to the timeout.
    void finish()
    {
        fireTimer();
        for (const SentRequest &sent : m_sent) {
            sent.checkAnswered();
            if (sent.isRefused()) {
                checkError(sent.error(), QStringLiteral("PowerManager"));
            }
        }
    }

private:
    static TavoPowerManagerState state()
    {
        return TavoValue(CMRoot()->getValue(TavoPowerManagerStatePath()).toHash())
            .powerManagerState();
    }

    static void checkState()
    {
        const TavoPowerManagerState now = state();
        const auto resources = now.resources();
        FUZZ_CHECK(!now.standby() || resources.isEmpty(), "granted in standby: " << now);
        for (int i = 0; i < resources.size(); ++i) {
            const auto holders = resources.at(i).holders();
            FUZZ_CHECK(!holders.isEmpty(), now);
            for (int k = 0; k < holders.size(); ++k) {
                FUZZ_CHECK(now.modules().contains(holders.at(k)), now);
            }
        }
    }

    ScriptedService m_services;
    bool m_published = true;
    QList<CMSetDataRequest> m_kept;
    std::vector<SentRequest> m_sent;
    LoadedModule m_module;
};

// The numbers of the steps in inputs.
enum class Step { Request, SetAnswer, AnswerKept, Publish, FireTimer, Count };

void readStep(ByteReader &input, ValueReader &values, FuzzedPowerManager &module)
{
    switch (Step(input.below(int(Step::Count)))) {
    case Step::Request: {
        const int node = input.below(4);
        module.request(node, values.value());
        break;
    }
    case Step::SetAnswer:
        module.setAnswer(input.below(3));
        break;
    case Step::AnswerKept:
        module.answerKept();
        break;
    case Step::Publish:
        module.setModuleNode(input.below(2) == 1);
        break;
    case Step::FireTimer:
        module.fireTimer();
        break;
    case Step::Count:
        break;
    }
}
} // namespace

void fuzzOne(ByteReader &input)
{
    FuzzedPowerManager module;
    ValueReader values(input);
    for (int i = 0; i < maxSteps && !input.isEmpty(); ++i) {
        readStep(input, values, module);
    }
    module.finish();
}
