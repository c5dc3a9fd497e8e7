#include "framework_service/plugin_info.h"

#include <dlfcn.h>

#include <exception>

#include "common_service/tarn_def.h"
#include "internal/null_pointer.h"
#include "internal/plugin_folder.h"
#include "internal/process_life.h"
#include "operation_log/operation_log.h"

using namespace framework_internal;
using namespace operation_log;

namespace {

constexpr char OPERATION_LOAD[] = "plugin info load library.";

const char* ErrorText(const ACE_DLL& dll) {
    const char* pszError = dll.error();
    return pszError != nullptr && *pszError != '\0' ? pszError : "error unknown";
}

/// Calls into the plug-in. An exception must not cross the library: it is logged and counts as the
/// answer ORVA_FAIL.
template <typename Call>
int CallPlugin(const std::string& strLibName, const Call& call, CPlace place = CPlace::Here()) {
    try {
        return call();
    } catch (const std::exception& error) {
        return LogFailure({"call plugin", place}, ORVA_FAIL, "plugin threw, name[%s], reason[%s].",
                          strLibName.c_str(), error.what());
    } catch (...) {
        return LogFailure({"call plugin", place}, ORVA_FAIL,
                          "plugin threw, name[%s], reason unknown.", strLibName.c_str());
    }
}

/// Keeps the library that holds the address mapped, whatever becomes of the handle that opened it:
/// on the last close the loader decides by the library's dependencies whether to unmap it, and the
/// plug-in's object is called once more after that close.
void PinLibrary(const void* pAddress, const std::string& strLibName,
                CPlace place = CPlace::Here()) {
    Dl_info info{};
    void* const pHandle = dladdr(pAddress, &info) != 0
                              ? dlopen(info.dli_fname, RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE)
                              : nullptr;
    if (pHandle == nullptr) {
        LogFailure({OPERATION_LOAD, place}, ORVA_FAIL, "cannot keep library mapped, name[%s].",
                   strLibName.c_str());
        return;
    }
    dlclose(pHandle);
}

/// Puts a capability question to the plug-in's object.
template <typename Answer>
int Ask(IPlugin* pPlugin, const std::string& strLibName, int (IPlugin::*pQuestion)(Answer&),
        Answer& answer, CPlace place = CPlace::Here()) {
    if (pPlugin == nullptr) {
        return LogNullPointer({"Point m_pPlugin is null.", place}, ORVA_PARA_INVALID);
    }
    return CallPlugin(
        strLibName, [&] { return (pPlugin->*pQuestion)(answer); }, place);
}

}  // namespace

CPluginInfo::~CPluginInfo() {
    UnLoadLibrary();
}

int CPluginInfo::LoadLibrary() {
    if (m_strLibName.empty()) {
        return LogFailure(OPERATION_LOAD, ORVA_FAIL, "lib name is empty.");
    }
    std::string strFolder;
    if (const int iRet = GetPluginFolder(strFolder); iRet != ORVA_SUCCEED) {
        return LogFailure("plugin info load library", iRet, "get lib dir failed.");
    }
    const std::string strDllName = strFolder + "/" + m_strLibName;
    if (const int iRet = m_sdkDll.open(strDllName.c_str(), RTLD_LAZY | RTLD_GLOBAL, true);
        iRet != ORVA_SUCCEED) {
        return LogFailure(OPERATION_LOAD, iRet, "failure to open library[%s] as errno[%s].",
                          strDllName.c_str(), ErrorText(m_sdkDll));
    }
    void* const pEntryPoint = m_sdkDll.symbol("CreatePlugin");
    if (pEntryPoint == nullptr) {
        LogFailure(OPERATION_LOAD, ORVA_FAIL,
                   "failure to find the symbol of 'CreatePlugin', library[%s], errno[%s].",
                   strDllName.c_str(), ErrorText(m_sdkDll));
        m_sdkDll.close();
        return ORVA_FAIL;
    }
    const auto pCreate = reinterpret_cast<CREATE_SDK_FUNC>(pEntryPoint);
    int iRet = CallPlugin(m_strLibName, [&] { return pCreate(m_pPlugin); });
    const bool bMade = iRet == ORVA_SUCCEED && m_pPlugin != nullptr;
    if (!bMade) {
        // The placeholder is for a number and gets the text of dlerror, or nothing: what the entry
        // point left, before anything else is opened.
        LogFailure(OPERATION_LOAD, iRet, "failure to creat sdk, lib name[%s], errno[%d].",
                   m_strLibName.c_str(), dlerror());
    }
    if (m_pPlugin != nullptr) {
        PinLibrary(pEntryPoint, m_strLibName);
        KeepForProcessLife(m_pPlugin);
    }
    if (!bMade) {
        m_sdkDll.close();
        return iRet;
    }
    iRet = CallPlugin(m_strLibName, [this] {
        const int iInit = m_pPlugin->Init();
        if (iInit == ORVA_SUCCEED) {
            m_strName = m_pPlugin->GetName();
        }
        return iInit;
    });
    if (iRet != ORVA_SUCCEED) {
        LogFailure(OPERATION_LOAD, iRet, "fail to init plugin, name[%s]", m_strLibName.c_str());
        m_sdkDll.close();
        return iRet;
    }
    LogInfo(OPERATION_LOAD, "success to load library[%s:%s].", m_strName.c_str(),
            m_strLibName.c_str());
    return ORVA_SUCCEED;
}

int CPluginInfo::UnLoadLibrary() {
    if (m_pPlugin == nullptr) {
        LogFailure("plugin info unload library.", ORVA_SUCCEED, "null plugin, name[%s]",
                   m_strLibName.c_str());
        m_sdkDll.close();
        return ORVA_PARA_INVALID;
    }
    CallPlugin(m_strLibName, [this] { return m_pPlugin->UnInit(); });
    m_sdkDll.close();
    return ORVA_SUCCEED;
}

int CPluginInfo::GetSupportedJobs(std::list<unsigned int>& jobList) {
    return Ask(m_pPlugin, m_strLibName, &IPlugin::GetSupportedJobs, jobList);
}

int CPluginInfo::GetSupportedContainers(std::list<std::string>& containerList) {
    return Ask(m_pPlugin, m_strLibName, &IPlugin::GetSupportedContainers, containerList);
}

int CPluginInfo::GetContainerBindTable(ContainerTypeBindMap& containerBindList) {
    return Ask(m_pPlugin, m_strLibName, &IPlugin::GetContainerBindTable, containerBindList);
}

int CPluginInfo::GetSupportFaultShiftContainers(std::list<std::string>& containerList) {
    return Ask(m_pPlugin, m_strLibName, &IPlugin::GetSupportFaultShiftContainers, containerList);
}

int CPluginInfo::GetSupportLoadBalanceContainers(std::list<std::string>& containerList) {
    return Ask(m_pPlugin, m_strLibName, &IPlugin::GetSupportLoadBalanceContainers, containerList);
}
