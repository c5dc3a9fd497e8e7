#pragma once

#include <string>

/// The service's own configuration, as far as others need it.
class [[gnu::visibility("default")]] CTARNConf {
public:
    static CTARNConf m_oConf;

    /// The code that names this cluster in every store path. Callable from any thread.
    std::string GetCstClusterCode();
};
