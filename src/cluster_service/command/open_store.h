#pragma once

#include <memory>
#include <string>

#include "reference_host/store.h"

/// What is wrong with a store's name, "sqlite:FILE", "zookeeper:HOST:PORT,HOST:PORT" or "memory";
/// empty when it is well-formed.
std::string CheckStoreName(const std::string& strName);

/// What a store is opened for. Unless it is to be created, a file must be there already.
enum class EOpenStore { TO_READ, TO_CHANGE, TO_CREATE };

/// Opens the store of a well-formed name. Null on failure, with the reason in strError.
std::shared_ptr<IStore> OpenStore(const std::string& strName, EOpenStore eOpen,
                                  std::string& strError);

/// Does the store of a well-formed name outlive the program?
bool IsStoreKept(const std::string& strName);
