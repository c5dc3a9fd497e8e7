#pragma once

#include <dlfcn.h>

#include <string>
#include <vector>

#include "cluster_engine/engine_fixture.h"
#include "reference_host/host_settings.h"
#include "support/scripted_plugin.h"

inline CContainerAddr Scripted(const std::string& strNodeId) {
    return {strNodeId, PSZ_SCRIPTED_TYPE};
}

/// A test of the engine with the scripted plug-in alone: three nodes with a container each, loaded
/// and settled.
class CScriptedTest : public CEngineTest {
protected:
    CScriptedTest() {
        Configure({"X", "", SCRIPTED_LIB_DIR, ""});
        Store({{"n1", {PSZ_SCRIPTED_TYPE}},
               {"n2", {PSZ_SCRIPTED_TYPE}},
               {"n3", {PSZ_SCRIPTED_TYPE}}});
        Load();
        m_pLibrary = dlopen(SCRIPTED_LIB_DIR "/plugins/scripted.so", RTLD_NOW | RTLD_NOLOAD);
        // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): what dlsym is for
        m_pScript = &reinterpret_cast<ScriptFunc>(dlsym(m_pLibrary, "GetScript"))();
        *m_pScript = CScript();
        Settle();
    }

    ~CScriptedTest() override {
        *m_pScript = CScript();
        dlclose(m_pLibrary);
    }

    CScript& Script() { return *m_pScript; }

    /// How often the plug-in's operation was called.
    int Calls(const std::string& strOperation) { return m_pScript->calls[strOperation]; }

    /// A job of the scripted plug-in.
    CAnswer Place(const std::vector<CTestTask>& tasks) {
        CJob job;
        job.strNodeId = "n1";
        job.uiJobType = NUMERIC_SCRIPTED_JOB;
        job.strXml = JobXml(tasks);
        return Do(job);
    }

    static std::vector<CContainerAddr> AllScripted() {
        return {Scripted("n1"), Scripted("n2"), Scripted("n3")};
    }

private:
    void* m_pLibrary = nullptr;
    CScript* m_pScript = nullptr;
};
