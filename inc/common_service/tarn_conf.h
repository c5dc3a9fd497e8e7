#pragma once

#include <string>

/// The service's own configuration, as far as others need it.
class CTARNConf {
public:
    static CTARNConf m_oConf;

    /// The code that names this cluster in every store path. Callable from any thread.
    std::string GetCstClusterCode();

    /// What the reference host adds. Set before other threads run.
    void SetCstClusterCode(const std::string& strClusterCode);

private:
    std::string m_strClusterCode;
};
