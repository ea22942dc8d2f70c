// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "explorer/sound/SoundFacts.h"
#include <core/tavo.h>

/// The services that the module meets in the model: the main player, the power manager and the
/// requesters' response path. Each request is taken in its call and answered there or later.
class SoundServices : public CMNodesWorker
{
    Q_OBJECT

public:
    SoundServices(SoundJudge *judge, SoundFacts *facts);

    static CMPath responsePath();

    /// Answers what is outstanding.
    void answer(bool success);

    /// Answers what is still outstanding when the module has gone.
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
