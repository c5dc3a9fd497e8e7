#pragma once

#include <ace/DLL.h>

#include <list>
#include <string>

#include "framework_service/IPlugin.h"

/// One plug-in library on its way in or out of the process. It owns the library handle, not the
/// plug-in's object. A library that made an object stays mapped until the process ends, since the
/// object is spoken to once more after the handle has been closed. No lock: loaded and unloaded by
/// one thread, in between only read.
class CPluginInfo {
public:
    CPluginInfo() = default;

    /// The file name in the plug-in directory.
    CPluginInfo(const std::string& strLibName) : m_strLibName(strLibName) {}
    CPluginInfo(const CPluginInfo&) = delete;
    CPluginInfo& operator=(const CPluginInfo&) = delete;

    /// Unloads, also what is unloaded already.
    ~CPluginInfo();

    /// Opens the library, makes its object and initialises it. Returns 0, or a code that has been
    /// logged. An entry point that answers 0 without an object is a success here.
    int LoadLibrary();

    /// Calls UnInit, ignoring its answer, and closes the handle. Returns 0, or ORVA_PARA_INVALID,
    /// logged, without an object. The object stays.
    int UnLoadLibrary();

    IPlugin* GetPlugin() const { return m_pPlugin; }

    /// The plug-in's own name; empty until it is loaded.
    std::string GetName() const { return m_strName; }

    /// The file name in the plug-in directory.
    const std::string& GetLibName() const { return m_strLibName; }

    /// Why a load or a question failed last, in words: the loader's text, what the plug-in threw or
    /// answered. Empty when none failed.
    const std::string& GetFailure() const { return m_strFailure; }

    /// @name The plug-in's answer; ORVA_PARA_INVALID, logged, without an object
    /// @{
    int GetSupportedJobs(std::list<unsigned int>& jobList);
    int GetSupportedContainers(std::list<std::string>& containerList);
    int GetContainerBindTable(ContainerTypeBindMap& containerBindList);
    int GetSupportFaultShiftContainers(std::list<std::string>& containerList);
    int GetSupportLoadBalanceContainers(std::list<std::string>& containerList);
    /// @}

private:
    std::string m_strName;
    std::string m_strLibName;
    ACE_DLL m_sdkDll{true};
    IPlugin* m_pPlugin = nullptr;
    std::string m_strFailure;
};
