// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "explorer/sound/SoundFacts.h"
#include <core/tavo.h>

/// The services that the module uses: the main player, the power manager and the clients' response
/// path. Each request is checked when it arrives and answered then or later.
class SoundServices : public CMNodesWorker
{
    Q_OBJECT

public:
    SoundServices(SoundJudge *judge, SoundFacts *facts);

    static CMPath responsePath();

    /// Answers the outstanding request.
    void answer(bool success);

    /// Answers the outstanding request after the module's end.
    void answerTooLate();

    void clear();

private:
    void on_ducking(const CMSetDataRequest &request);
    void on_resource(const CMSetDataRequest &request);
    void on_response(const CMSetDataRequest &request);
    void on_registration(const CMSetDataRequest &request);

    void take(SoundFacts::Request kind, const CMSetDataRequest &request);
    void acquire(const CMSetDataRequest &request);
    void release(const CMSetDataRequest &request);
    void giveAnswer(SoundFacts::Request kind, const CMSetDataRequest &request, bool success);

    SoundJudge *m_judge;
    SoundFacts *m_facts;
    CMSetDataRequest m_outstanding;
};
