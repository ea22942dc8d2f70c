// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "support/EventLoop.h"
#include "support/LoadedModule.h"
#include "support/LogCapture.h"
#include "support/Request.h"
#include <core/tavo.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

/// The module, loaded from its library and used through the model only.
class PlayerTest : public testing::Test
{
protected:
    explicit PlayerTest(const QVariantHash &config = {})
        : m_module(MODULE_FILE, "player", config)
    {
    }

    static Request duck(const QString &requester)
    {
        return sendDucking(
            TavoPlayerAudioDuckingRequest().setDuckAudio(true).setRequester(requester));
    }
    static Request unduck(const QString &requester)
    {
        return sendDucking(
            TavoPlayerAudioDuckingRequest().setDuckAudio(false).setRequester(requester));
    }
    static Request sendDucking(const TavoPlayerAudioDuckingRequest &ducking)
    {
        return {TavoPlayerMainAudioDuckingPath(), ducking};
    }

    static Request play(const QVariant &value) { return {TavoPlayerMainAudioPlayPath(), value}; }
    static Request stop() { return {TavoPlayerMainAudioStopPath(), QVariant()}; }
    static Request setVolume(const QVariant &value)
    {
        return {TavoPlayerMainAudioVolumePath(), value};
    }

    static TavoPlayerMainAudioState state()
    {
        return valueAt(TavoPlayerMainAudioStatePath()).mainAudioState();
    }
    static std::vector<QString> requesters() { return elementsOf(state().requesters()); }

    QStringList reconfigure(const QVariantHash &config) const
    {
        return m_module.reconfigure(config);
    }

    const LogCapture &log() const { return m_log; }

private:
    LogCapture m_log{"Player"};
    LoadedModule m_module;
};
