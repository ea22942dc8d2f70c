// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "bus/BusError.h"
#include "bus/BusReader.h"
#include "bus/BusWriter.h"
#include "support/bus/BusClient.h"
#include <core/records/cmpath.h>

#include <QVariant>

#include <functional>
#include <map>
#include <string>

/// A host that does what the test says. Calls without a script get an empty reply.
class ScriptedHost
{
public:
    using Script = std::function<void(const BusMessage &call)>;

    explicit ScriptedHost(const QString &bus)
        : m_client(bus)
        , m_calls(m_client.connection().handleCalls([this](const BusMessage &call) { take(call); }))
        , m_model(m_client.connection().createObject(BusInterface::model()))
    {
    }

    void appear() { m_client.takeName(QStringLiteral("org.tavo.Model1")); }
    void leave() { m_client.releaseName(QStringLiteral("org.tavo.Model1")); }

    /// What it does with calls of a method, such as "OpenInbox", or of a method about a path, such as
    /// "Call /notifications/player/enqueue".
    void on(const QString &method, const Script &script)
    {
        m_scripts[method.toStdString()] = script;
    }
    void on(const QString &method, const CMPath &path, const Script &script)
    {
        on(method + ' ' + path.toString(), script);
    }

    static void refuse(const BusMessage &call,
                       const BusError &error = BusError::limitExceeded("Too many calls"))
    {
        call.createErrorReply(error).send();
    }

    static void reply(const BusMessage &call) { call.createReply().send(); }
    static void reply(const BusMessage &call, const QVariant &value)
    {
        BusWriter writer(call.createReply());
        writer.writeVariant(value);
        writer.message().send();
    }
    static void replyWithText(const BusMessage &call, const QString &text)
    {
        BusWriter writer(call.createReply());
        writer.writeString(text);
        writer.message().send();
    }

    static void replyWithInt(const BusMessage &call, int number)
    {
        BusWriter writer(call.createReply());
        writer.writeInt32(number);
        writer.message().send();
    }

    /// Replies to GetRows.
    static void replyWithRow(const BusMessage &call, const QString &row)
    {
        BusWriter writer(call.createReply());
        writer.openArray("v");
        writer.writeVariant(row);
        writer.close();
        writer.message().send();
    }

    /// Describes one node.
    static void describe(const BusMessage &call, const QString &path, const QString &text)
    {
        BusWriter writer(call.createReply());
        writer.openArray("(ssss)");
        writer.openStruct("ssss");
        writer.writeString(path);
        writer.writeString(QStringLiteral("list"));
        writer.writeString(QStringLiteral("Title"));
        writer.writeString(text);
        writer.close();
        writer.close();
        writer.message().send();
    }

    /// The value of a request to a node.
    static QVariant valueOf(const BusMessage &call)
    {
        BusReader reader(call);
        reader.readString();
        return reader.readVariant();
    }

    void emitValueChanged(const CMPath &path, const QVariant &value) const
    {
        BusWriter signal(m_model->createSignal("ValueChanged"));
        signal.writeString(path.toString());
        signal.writeVariant(value);
        signal.message().send();
    }

private:
    void take(const BusMessage &call)
    {
        auto script = m_scripts.find(call.member());
        if (script == m_scripts.end() && !call.hasSignature("") && call.member() != "Describe") {
            BusReader reader(call);
            script = m_scripts.find(call.member() + ' ' + reader.readString().toStdString());
            reader.restart();
        }
        if (script != m_scripts.end()) {
            script->second(call);
        } else {
            reply(call);
        }
    }

    BusClient m_client;
    std::map<std::string, Script> m_scripts;
    const BusSlot m_calls;
    const std::unique_ptr<BusObject> m_model;
};
