// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include "fleet/publishing/Discovery.h"

#include "fleet/protocol/FleetTopics.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {
/// Makes the messages of one device.
class Writer
{
public:
    explicit Writer(const FleetConfiguration &configuration)
        : m_configuration(configuration)
        , m_node(QStringLiteral("tavo-") + configuration.device)
    {
        m_node.replace(QLatin1Char('.'), QLatin1Char('_'));
    }

    void add(const char *component, const QString &object, const QString &name, QJsonObject entity)
    {
        entity.insert(QStringLiteral("name"), name);
        entity.insert(QStringLiteral("unique_id"), m_node + QLatin1Char('-') + object);
        entity.insert(QStringLiteral("availability_topic"),
                      FleetTopics::online(m_configuration.device));
        entity.insert(QStringLiteral("payload_available"), QStringLiteral("1"));
        entity.insert(QStringLiteral("payload_not_available"), QStringLiteral("0"));
        entity.insert(QStringLiteral("device"),
                      QJsonObject{{QStringLiteral("identifiers"), QJsonArray{m_node}},
                                  {QStringLiteral("name"), m_configuration.title},
                                  {QStringLiteral("sw_version"), QStringLiteral(TAVO_VERSION)}});
        MqttMessage message;
        message.topic = QStringLiteral("%1/%2/%3/%4/config")
                            .arg(m_configuration.discoveryPrefix, QLatin1String(component), m_node,
                                 QString(object).replace(QLatin1Char('.'), QLatin1Char('_')));
        message.payload = QJsonDocument(entity).toJson(QJsonDocument::Compact);
        message.isRetained = true;
        m_messages.push_back(message);
    }

    /// Something that sends a call. Each has an id of its own, of the time.
    void addCall(const char *component, const QString &object, const QString &name,
                 const QString &arguments)
    {
        add(component, object, name,
            {{QStringLiteral("command_topic"), FleetTopics::call(m_configuration.device)},
             {QStringLiteral("command_template"),
              QStringLiteral("{\"id\":\"home-{{ now().timestamp() }}\",%1}").arg(arguments)},
             {QStringLiteral("qos"), 1}});
    }

    void addState(const char *component, const char *what, const QString &name, const char *value)
    {
        add(component, QLatin1String(what), name,
            {{QStringLiteral("state_topic"),
              FleetTopics::state(m_configuration.device, QLatin1String(what))},
             {QStringLiteral("value_template"), QLatin1String(value)}});
    }

    std::vector<MqttMessage> take() { return std::move(m_messages); }

private:
    const FleetConfiguration &m_configuration;
    QString m_node;
    std::vector<MqttMessage> m_messages;
};
} // namespace

std::vector<MqttMessage> discoveryMessages(const FleetConfiguration &configuration)
{
    if (configuration.discoveryPrefix.isEmpty()) {
        return {};
    }
    Writer writer(configuration);
    writer.addCall("notify", QStringLiteral("message"), QStringLiteral("Message"),
                   QStringLiteral("\"call\":\"notify\",\"text\":{{ value | tojson }}"));
    writer.addState(
        "sensor", "display", QStringLiteral("Display"),
        "{{ (value_json.title or value_json.text)[:255] if value_json.shown else '' }}");
    writer.addState("binary_sensor", "sound", QStringLiteral("Sound"),
                    "{{ 'ON' if value_json.sounding else 'OFF' }}");
    writer.addState("binary_sensor", "quiet", QStringLiteral("Do not disturb"),
                    "{{ 'ON' if value_json.quiet else 'OFF' }}");
    writer.addState("sensor", "volume", QStringLiteral("Volume"), "{{ value_json.volume }}");
    for (auto button = configuration.buttons.begin(); button != configuration.buttons.end();
         ++button) {
        const QByteArray sound =
            QJsonDocument(QJsonArray{button.value()}).toJson(QJsonDocument::Compact);
        writer.addCall("button", QStringLiteral("button-") + button.key(), button.key(),
                       QStringLiteral("\"call\":\"sound\",\"sound\":%1")
                           .arg(QString::fromUtf8(sound.mid(1, sound.size() - 2))));
    }
    return writer.take();
}
