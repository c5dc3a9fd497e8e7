#include "common_service/tarn_def.h"
#include "framework_service/IPlugin.h"

namespace {

/// Takes the container type "A" and can shift its faults.
class CFaultShiftPlugin : public IPlugin {
public:
    std::string GetName() override { return "fault shift"; }

    int GetSupportFaultShiftContainers(std::list<std::string>& containerList) override {
        containerList = {"A"};
        return ORVA_SUCCEED;
    }

    int GetSupportLoadBalanceContainers(std::list<std::string>&) override { return ORVA_SUCCEED; }
    int GetSupportedJobs(std::list<unsigned int>&) override { return ORVA_SUCCEED; }

    int GetSupportedContainers(std::list<std::string>& containerList) override {
        containerList = {"A"};
        return ORVA_SUCCEED;
    }

    int GetContainerBindTable(ContainerTypeBindMap&) override { return ORVA_SUCCEED; }

    int PrivateTaskToResourceTask(const std::string&, uint32_t, PELU::CXml&,
                                  std::list<CResourceTask>&) override {
        return ORVA_SUCCEED;
    }

    int TaskSchedule(const std::string&, const std::list<CResourceTask>&, CTaskContainerMap&,
                     unsigned long long&, bool) override {
        return ORVA_SUCCEED;
    }

    int Init() override { return ORVA_SUCCEED; }
    int UnInit() override { return ORVA_SUCCEED; }
};

}  // namespace

extern "C" __attribute__((visibility("default"))) int CreatePlugin(IPlugin*& pPlugin) {
    static CFaultShiftPlugin plugin;
    pPlugin = &plugin;
    return ORVA_SUCCEED;
}
