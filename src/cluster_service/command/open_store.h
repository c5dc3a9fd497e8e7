#pragma once

#include <memory>
#include <string>

#include "reference_host/store.h"

/// What is wrong with a store's name, "sqlite:FILE", "zookeeper:HOST:PORT,HOST:PORT" or "memory";
/// empty when it is well-formed.
std::string CheckStoreName(const std::string& strName);

/// Opens the store of a well-formed name. With bCreate false a file must be there already. Null on
/// failure, with the reason in strError.
std::shared_ptr<IStore> OpenStore(const std::string& strName, bool bCreate, std::string& strError);
