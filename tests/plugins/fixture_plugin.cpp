#include <dlfcn.h>

#include <memory>
#include <stdexcept>
#include <string>

#include "common_service/logger.h"
#include "common_service/tarn_def.h"
#include "framework_service/IPlugin.h"

// A plug-in that writes a trace line for every call. By default it is a good one, an object of
// static storage; the definitions name the call that answers 5 or throws, and the kind of object.
#ifndef FIXTURE_PLUGIN_NAME
#define FIXTURE_PLUGIN_NAME FIXTURE_NAME
#endif
#ifndef FIXTURE_OBJECT
#define FIXTURE_OBJECT STATIC
#endif
#ifndef FIXTURE_JOB
#define FIXTURE_JOB 100
#endif
#ifndef FIXTURE_FAILS
#define FIXTURE_FAILS ""
#endif
#ifndef FIXTURE_THROWS
#define FIXTURE_THROWS ""
#endif
#ifndef FIXTURE_THROWS_INT
#define FIXTURE_THROWS_INT ""
#endif
#ifndef FIXTURE_THROWS_AGAIN
#define FIXTURE_THROWS_AGAIN ""
#endif

#ifdef FIXTURE_BORROWS
extern "C" int LentAnswer();
#endif
#ifdef FIXTURE_LENDS
extern "C" int LentAnswer() {
    return 42;
}
#endif

namespace {

int Answer(const std::string& strCall) {
    if (Logger* const pLogger = OMAdapter::getInstance().getLogger(); pLogger != nullptr) {
        pLogger->writeTraceLog(FIXTURE_NAME, 0, strCall.c_str(), "called");
    }
    if (strCall == FIXTURE_THROWS) {
        throw std::runtime_error(strCall + " of " FIXTURE_NAME);
    }
    if (static int iCalls = 0; strCall == FIXTURE_THROWS_AGAIN && ++iCalls > 1) {
        throw std::runtime_error(strCall + " again");
    }
    if (strCall == FIXTURE_THROWS_INT) {
        throw 17;
    }
    return strCall == FIXTURE_FAILS ? 5 : ORVA_SUCCEED;
}

class CFixturePlugin : public IPlugin {
public:
    int Init() override { return Answer("Init"); }

    /// Writes to memory that the object owns: an object that is gone, or code that is unmapped,
    /// does not pass unseen.
    int UnInit() override {
        *m_pOwned += "again";
        return Answer("UnInit");
    }

    std::string GetVersion() override {
        Answer("GetVersion");
        return "fixture";
    }

    std::string GetName() override {
        Answer("GetName");
        return FIXTURE_PLUGIN_NAME;
    }

    int GetSupportedJobs(std::list<unsigned int>& jobList) override {
        jobList = {7, FIXTURE_JOB};
        return Answer("GetSupportedJobs");
    }

    int GetSupportedContainers(std::list<std::string>& containerList) override {
        containerList = {"Shared", FIXTURE_NAME "Type"};
        return Answer("GetSupportedContainers");
    }

    int GetContainerBindTable(ContainerTypeBindMap& containerBindList) override {
        containerBindList = {{"Shared", {FIXTURE_NAME "Logic"}},
                             {FIXTURE_NAME "Type", {FIXTURE_NAME "One", FIXTURE_NAME "Two"}}};
        return Answer("GetContainerBindTable");
    }

    int GetSupportFaultShiftContainers(std::list<std::string>& containerList) override {
        containerList = {"Shared", FIXTURE_NAME "Type"};
        return Answer("GetSupportFaultShiftContainers");
    }

    int GetSupportLoadBalanceContainers(std::list<std::string>& containerList) override {
        containerList = {"Shared"};
        return Answer("GetSupportLoadBalanceContainers");
    }

    int PrivateTaskToResourceTask(const std::string&, uint32_t, PELU::CXml&,
                                  std::list<CResourceTask>&) override {
        return ORVA_SUCCEED;
    }

    int TaskSchedule(const std::string&, const std::list<CResourceTask>&, CTaskContainerMap&,
                     unsigned long long&, bool) override {
#ifdef FIXTURE_BORROWS
        return LentAnswer();
#else
        return ORVA_SUCCEED;
#endif
    }

    void Routing() override {
        Answer("Routing");
    }

private:
    std::unique_ptr<std::string> m_pOwned = std::make_unique<std::string>("once ");
};

[[maybe_unused]] IPlugin* MakeObject() {
    enum { NONE, STATIC, HEAP };
    if constexpr (FIXTURE_OBJECT == STATIC) {
        static CFixturePlugin plugin;
        return &plugin;
    }
    return FIXTURE_OBJECT == HEAP ? new CFixturePlugin : nullptr;
}

}  // namespace

#ifndef FIXTURE_NO_ENTRY
extern "C" int CreatePlugin(IPlugin*& pPlugin) {
    pPlugin = MakeObject();
#ifdef FIXTURE_NEEDS
    dlopen(FIXTURE_NEEDS, RTLD_LAZY);
#endif
    return Answer("CreatePlugin");
}
#endif
