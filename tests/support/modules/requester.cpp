// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#include <core/tavo.h>

#include <QJsonDocument>
#include <QJsonObject>
#include <QLocalSocket>

#include <chrono>
#include <functional>
#include <stdexcept>

// A worker that sends requests for a test and reports what happens to it. They communicate over a
// local socket, with a JSON object per line. The test sends:
//
//   {"do": "invoke", "path": P, "value": V, "tag": T}
//   {"do": "watch", "path": P}   reports the current value and each later one
//
// and the worker sends, with "t", the seconds of the monotonic clock:
//
//   {"event": "ready"}
//   {"event": "answer", "tag": T, "error": text}   the error is empty for success
//   {"event": "value", "path": P, "value": V}
//   {"event": "response", "id": I, "type": N}      at its node /requester/NAME/response
//
// Configuration: "socket", the name of the test's socket.

namespace {
double now()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

class RequesterWorker : public CMNodesWorker
{
    Q_OBJECT

public:
    RequesterWorker(const QString &name, const QVariantHash &config);

private Q_SLOTS:
    void on_socket_readyRead();
    void on_response_activated(const CMSetDataRequest &request);
    void on_watched_changed(const CMPath &path, const QVariant &value);

private:
    void invoke(const QJsonObject &line);
    void watch(const CMPath &path);
    void tell(const QString &event, QJsonObject details = {});

    QLocalSocket m_socket;
};

RequesterWorker::RequesterWorker(const QString &name, const QVariantHash &config)
    : CMNodesWorker(config, name)
{
    TavoConfiguration configuration(config);
    const QString socket = configuration.string(QStringLiteral("socket"), {});
    configuration.finish();

    m_socket.connectToServer(socket);
    constexpr int timeoutMs = 10000;
    if (!m_socket.waitForConnected(timeoutMs)) {
        throw std::runtime_error("nobody listens at " + socket.toStdString());
    }
    tavoConnect(&m_socket, &QLocalSocket::readyRead, this, &RequesterWorker::on_socket_readyRead);
    CMActivateNode::create(nodes(), CMPath(QStringLiteral("/requester")) + name +
                                        QStringLiteral("/response"))
        ->setInvoke(this, &RequesterWorker::on_response_activated, Qt::QueuedConnection);
    tell(QStringLiteral("ready"));
}

void RequesterWorker::on_socket_readyRead()
{
    while (m_socket.canReadLine()) {
        const QJsonObject line = QJsonDocument::fromJson(m_socket.readLine()).object();
        if (line[QStringLiteral("do")] == QLatin1String("invoke")) {
            invoke(line);
        } else {
            watch(CMPath(line[QStringLiteral("path")].toString()));
        }
    }
}

void RequesterWorker::invoke(const QJsonObject &line)
{
    const CMReply<QVariant> reply;
    CMRoot()->invoke(CMPath(line[QStringLiteral("path")].toString()),
                     QVariant(line[QStringLiteral("value")].toObject().toVariantHash()), reply);
    reply.onFinished(this,
                     [this, tag = line[QStringLiteral("tag")]](const CMReply<QVariant> &answer) {
                         tell(QStringLiteral("answer"),
                              {{QStringLiteral("tag"), tag},
                               {QStringLiteral("error"), answer.error().message().toString()}});
                     });
}

void RequesterWorker::watch(const CMPath &path)
{
    CMRoot()->connectValueChange(path, this, &RequesterWorker::on_watched_changed);
    on_watched_changed(path, CMRoot()->getValue(path));
}

void RequesterWorker::on_response_activated(const CMSetDataRequest &request)
{
    const TavoNotificationPlayerResponse response =
        TavoValue(request.value().toHash()).notificationPlayerResponse();
    request.reply().setValue(QVariant());
    tell(QStringLiteral("response"),
         {{QStringLiteral("id"), response.id()}, {QStringLiteral("type"), int(response.type())}});
}

void RequesterWorker::on_watched_changed(const CMPath &path, const QVariant &value)
{
    tell(QStringLiteral("value"),
         {{QStringLiteral("path"), path.toString()},
          {QStringLiteral("value"), QJsonObject::fromVariantHash(value.toHash())}});
}

void RequesterWorker::tell(const QString &event, QJsonObject details)
{
    details.insert(QStringLiteral("t"), now());
    details.insert(QStringLiteral("event"), event);
    m_socket.write(QJsonDocument(details).toJson(QJsonDocument::Compact) + '\n');
    m_socket.flush();
}
} // namespace

TAVO_MODULE_EXPORT void *worker_create(const char *name, void *config)
{
    CMWorker *worker =
        new RequesterWorker(QString::fromUtf8(name), *static_cast<const QVariantHash *>(config));
    return worker;
}

#include "requester.moc"
