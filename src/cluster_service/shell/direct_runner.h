#pragma once

#include <functional>
#include <memory>
#include <string>

#include "cluster_engine/host.h"

/// Runs a plug-in's call here and now, however long it takes.
class CDirectRunner : public IPluginRunner {
public:
    bool Run(const std::string& /*strPlugin*/, const std::string& /*strOperation*/,
             std::shared_ptr<std::function<void()>> pCall) override {
        (*pCall)();
        return true;
    }

    bool IsBusy(const std::string& /*strPlugin*/) override { return false; }
};
