// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// Sequences of requests to the four request nodes and the revoke node of the notifications module,
// mixed with events of services, players, timers and clients.

#include "fuzz/requests/FuzzedNotifications.h"
#include "fuzz/support/Fuzz.h"
#include "fuzz/support/ValueReader.h"

namespace {
using Node = NotificationsNode;
using Step = NotificationsStep;

constexpr int maxSteps = 200;

Node readNode(ByteReader &input)
{
    return Node(input.below(int(Node::Count)));
}

void readRequests(ByteReader &input, ValueReader &values, FuzzedNotifications &module)
{
    QVector<QPair<Node, QVariant>> requests;
    for (int i = 1 + input.below(4); i > 0; --i) {
        const Node node = readNode(input);
        requests.append({node, values.value()});
    }
    module.requestAtOnce(requests);
}

void readStep(ByteReader &input, ValueReader &values, FuzzedNotifications &module)
{
    switch (Step(input.below(int(Step::Count)))) {
    case Step::Request: {
        const Node node = readNode(input);
        module.request(node, values.value());
        break;
    }
    case Step::AtOnce:
        readRequests(input, values, module);
        break;
    case Step::CloseNode:
        module.closeNode(CMPath::fromQVariant(module.knownPath(input.byte())));
        break;
    case Step::ChangeRows: {
        const CMPath path = CMPath::fromQVariant(module.knownPath(input.byte()));
        module.changeRows(path, values.value().toStringList());
        break;
    }
    case Step::EndPlayer: {
        const int which = input.byte();
        module.endPlayer(which, input.byte());
        break;
    }
    case Step::FailPlay:
        module.failPlay(values.text());
        break;
    case Step::FireTimer:
        module.fireTimer(input.byte());
        break;
    case Step::SetDucking:
        module.setDucking(input.byte());
        break;
    case Step::SetResources:
        module.setResources(input.byte());
        break;
    case Step::AnswerKept: {
        const int which = input.byte();
        module.answerKept(which, input.byte() % 2 == 0);
        break;
    }
    case Step::Count:
        break;
    }
}
} // namespace

void fuzzOne(ByteReader &input)
{
    FuzzedNotifications module;
    ValueReader values(input);
    values.setKnown([&module](int which) { return module.knownPath(which); });
    for (int i = 0; i < maxSteps && !input.isEmpty(); ++i) {
        readStep(input, values, module);
    }
    module.finish();
}
