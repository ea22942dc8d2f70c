// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

// A module that sends the notifications a request as soon as it is created, and writes when the
// reply came. As the last module of a host, it shows when all modules work.

#include "AnswerTime.h"
#include <core/tavo.h>

namespace {
class AskingWorker : public CMNodesWorker
{
public:
    explicit AskingWorker(const QVariantHash &config)
        : CMNodesWorker(config, QStringLiteral("Asking"))
    {
        TavoConfiguration configuration(config);
        m_file = configuration.string(QStringLiteral("file"), {});
        configuration.finish();

        const CMReply<QVariant> reply;
        CMRoot()->invoke(TavoNotificationPlayerCancelPath(),
                         TavoValue().setString_(QStringLiteral("unknown")), reply);
        reply.onFinished(this, [this](const CMReply<QVariant> &) { writeAnswerTime(m_file); });
    }

private:
    QString m_file;
};
} // namespace

TAVO_MODULE_EXPORT void *worker_create(const char * /*name*/, void *config)
{
    CMWorker *worker = new AskingWorker(*static_cast<const QVariantHash *>(config));
    return worker;
}
