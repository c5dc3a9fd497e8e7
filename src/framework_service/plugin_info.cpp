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
/// answer ORVA_FAIL. Of a failure, strFailure holds the words.
template <typename Call>
int CallPlugin(const char* pszCall, const std::string& strLibName, std::string& strFailure,
               const Call& call, CPlace place = CPlace::Here()) {
    try {
        const int iRet = call();
        if (iRet != ORVA_SUCCEED) {
            strFailure = std::string(pszCall) + " answered " + std::to_string(iRet);
        }
        return iRet;
    } catch (const std::exception& error) {
        strFailure = std::string(pszCall) + " threw: " + error.what();
        return LogFailure({"call plugin", place}, ORVA_FAIL, "plugin threw, name[%s], reason[%s].",
                          strLibName.c_str(), error.what());
    } catch (...) {
        strFailure = std::string(pszCall) + " threw";
        return LogFailure({"call plugin", place}, ORVA_FAIL,
                          "plugin threw, name[%s], reason unknown.", strLibName.c_str());
    }
}

/// Opens a library of the plug-in folder and finds its entry point. Returns 0; or, logged, a code,
/// with a library that has no entry point closed again.
int Open(const std::string& strLibName, ACE_DLL& dll, void*& pEntryPoint, std::string& strFailure,
         CPlace place = CPlace::Here()) {
    std::string strFolder;
    if (const int iRet = GetPluginFolder(strFolder); iRet != ORVA_SUCCEED) {
        strFailure = "no library directory";
        return LogFailure({"plugin info load library", place}, iRet, "get lib dir failed.");
    }
    const std::string strDllName = strFolder + "/" + strLibName;
    if (const int iRet = dll.open(strDllName.c_str(), RTLD_LAZY | RTLD_GLOBAL, true);
        iRet != ORVA_SUCCEED) {
        strFailure = ErrorText(dll);
        return LogFailure({OPERATION_LOAD, place}, iRet,
                          "failure to open library[%s] as errno[%s].", strDllName.c_str(),
                          strFailure.c_str());
    }
    pEntryPoint = dll.symbol("CreatePlugin");
    if (pEntryPoint == nullptr) {
        strFailure = ErrorText(dll);
        LogFailure({OPERATION_LOAD, place}, ORVA_FAIL,
                   "failure to find the symbol of 'CreatePlugin', library[%s], errno[%s].",
                   strDllName.c_str(), strFailure.c_str());
        dll.close();
        return ORVA_FAIL;
    }
    return ORVA_SUCCEED;
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

/// Puts a capability question, of the name of the caller, to the plug-in's object.
template <typename Answer>
int Ask(IPlugin* pPlugin, const std::string& strLibName, std::string& strFailure,
        int (IPlugin::*pQuestion)(Answer&), Answer& answer, CPlace place = CPlace::Here()) {
    if (pPlugin == nullptr) {
        return LogNullPointer({"Point m_pPlugin is null.", place}, ORVA_PARA_INVALID);
    }
    return CallPlugin(
        place.pszFunction, strLibName, strFailure, [&] { return (pPlugin->*pQuestion)(answer); },
        place);
}

}  // namespace

CPluginInfo::~CPluginInfo() {
    UnLoadLibrary();
}

int CPluginInfo::LoadLibrary() {
    if (m_strLibName.empty()) {
        m_strFailure = "no file name";
        return LogFailure(OPERATION_LOAD, ORVA_FAIL, "lib name is empty.");
    }
    void* pEntryPoint = nullptr;
    if (const int iRet = Open(m_strLibName, m_sdkDll, pEntryPoint, m_strFailure);
        iRet != ORVA_SUCCEED) {
        return iRet;
    }
    int iRet = CallPlugin("CreatePlugin", m_strLibName, m_strFailure, [&] {
        return reinterpret_cast<CREATE_SDK_FUNC>(pEntryPoint)(m_pPlugin);
    });
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
        m_strFailure = iRet == ORVA_SUCCEED ? "CreatePlugin made no object" : m_strFailure;
        m_sdkDll.close();
        return iRet;
    }
    iRet = CallPlugin("Init", m_strLibName, m_strFailure, [this] { return m_pPlugin->Init(); });
    if (iRet == ORVA_SUCCEED) {
        iRet = CallPlugin("GetName", m_strLibName, m_strFailure, [this] {
            m_strName = m_pPlugin->GetName();
            return 0;
        });
    }
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
    CallPlugin("UnInit", m_strLibName, m_strFailure, [this] { return m_pPlugin->UnInit(); });
    m_sdkDll.close();
    return ORVA_SUCCEED;
}

int CPluginInfo::GetSupportedJobs(std::list<unsigned int>& jobList) {
    return Ask(m_pPlugin, m_strLibName, m_strFailure, &IPlugin::GetSupportedJobs, jobList);
}

int CPluginInfo::GetSupportedContainers(std::list<std::string>& containerList) {
    return Ask(m_pPlugin, m_strLibName, m_strFailure, &IPlugin::GetSupportedContainers,
               containerList);
}

int CPluginInfo::GetContainerBindTable(ContainerTypeBindMap& containerBindList) {
    return Ask(m_pPlugin, m_strLibName, m_strFailure, &IPlugin::GetContainerBindTable,
               containerBindList);
}

int CPluginInfo::GetSupportFaultShiftContainers(std::list<std::string>& containerList) {
    return Ask(m_pPlugin, m_strLibName, m_strFailure, &IPlugin::GetSupportFaultShiftContainers,
               containerList);
}

int CPluginInfo::GetSupportLoadBalanceContainers(std::list<std::string>& containerList) {
    return Ask(m_pPlugin, m_strLibName, m_strFailure, &IPlugin::GetSupportLoadBalanceContainers,
               containerList);
}
