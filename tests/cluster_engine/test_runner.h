#pragma once

#include <functional>
#include <memory>
#include <string>

#include "cluster_engine/host.h"

/// Runs calls here and now, but for one that a test wants to be late.
class CTestRunner : public IPluginRunner {
public:
    /// The uiNth call from now, 1 being the next, does not come back in time.
    void MakeLate(unsigned int uiNth) { m_uiCallsUntilLate = uiNth; }

    /// The late call runs and comes back.
    void FinishLate() {
        (*m_pLate)();
        m_pLate.reset();
    }

    bool Run(const std::string& /*strPlugin*/, const std::string& /*strOperation*/,
             std::shared_ptr<std::function<void()>> pCall) override {
        if (m_uiCallsUntilLate != 0 && --m_uiCallsUntilLate == 0) {
            m_pLate = std::move(pCall);
            return false;
        }
        (*pCall)();
        return true;
    }

    bool IsBusy(const std::string& /*strPlugin*/) override { return m_pLate != nullptr; }

private:
    unsigned int m_uiCallsUntilLate = 0;
    std::shared_ptr<std::function<void()>> m_pLate;
};
