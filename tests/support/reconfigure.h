#pragma once

#include <string>

#include "reference_host/host_settings.h"

/// Tells the host one thing anew and leaves the rest:
///     Reconfigure(&CHostSettings::strLibDir, m_dir.GetPath());
inline void Reconfigure(std::string CHostSettings::*pSetting, const std::string& strValue) {
    CHostSettings settings = GetHostSettings();
    settings.*pSetting = strValue;
    Configure(settings);
}
