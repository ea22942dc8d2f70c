// SPDX-FileCopyrightText: 2026 The Tavo developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "module/powermanager/ModuleDouble.h"
#include "support/EventLoop.h"
#include "support/LoadedModule.h"
#include "support/LogCapture.h"
#include "support/Request.h"
#include <core/tavo.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

/// The module, loaded from its library and used through the model only.
class PowerManagerTest : public testing::Test
{
protected:
    using Resources = TavoPowerManagerResources;
    using Actions = TavoPowerModuleActions;
    using Manner = ModuleDouble::Manner;
    using Module = std::unique_ptr<ModuleDouble>;

    explicit PowerManagerTest(const QVariantHash &config = {})
        : m_module(std::make_unique<LoadedModule>(MODULE_FILE, "powermanager", config))
    {
    }

    void removeService() { m_module.reset(); }

    QStringList reconfigure(const QVariantHash &config) { return m_module->reconfigure(config); }

    Module makeUnregistered(const QString &name, Manner manner = Manner::Answers)
    {
        return std::make_unique<ModuleDouble>(name, &m_journal, manner);
    }

    /// A module that has registered.
    Module makeModule(const QString &name, Manner manner = Manner::Answers)
    {
        Module module = makeUnregistered(name, manner);
        EXPECT_TRUE(registerModule(module->registration()).succeeds());
        return module;
    }

    static Request registerModule(const TavoPowerManagerModuleRegister &registration)
    {
        return {TavoPowerManagerModuleRegisterPath(), registration};
    }

    static TavoPowerManagerResourceRequest
    resourceRequest(Actions::Enum action, Resources::Enum resource, const QString &module)
    {
        return TavoPowerManagerResourceRequest()
            .setModuleName(module)
            .setResource(resource)
            .setAction(action);
    }

    static Request send(const TavoPowerManagerResourceRequest &request)
    {
        return {TavoPowerManagerResourceRequestPath(), request};
    }
    static Request acquire(Resources::Enum resource, const QString &module)
    {
        return send(resourceRequest(Actions::Acquire, resource, module));
    }
    static Request release(Resources::Enum resource, const QString &module)
    {
        return send(resourceRequest(Actions::Release, resource, module));
    }
    static Request standby() { return {TavoPowerManagerStandbyPath(), QVariant()}; }
    static Request resume() { return {TavoPowerManagerResumePath(), QVariant()}; }

    static TavoPowerManagerState state()
    {
        return valueAt(TavoPowerManagerStatePath()).powerManagerState();
    }

    static std::vector<QString> holders(Resources::Enum resource)
    {
        for (const auto &entry : elementsOf(state().resources())) {
            if (entry.resource() == resource) {
                return elementsOf(entry.holders());
            }
        }
        return {};
    }

    const ModuleDouble::Journal &journal() const { return m_journal; }
    const LogCapture &log() const { return m_log; }

private:
    LogCapture m_log{"PowerManager"};
    ModuleDouble::Journal m_journal;
    std::unique_ptr<LoadedModule> m_module;
};
