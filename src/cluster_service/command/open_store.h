#pragma once

#include <memory>
#include <string>

#include "reference_host/store.h"

/// What is wrong with a store's name, "sqlite:FILE", "zookeeper:HOST:PORT,HOST:PORT" or "memory";
/// empty when it is well-formed.
std::string CheckStoreName(const std::string& strName);

/// What a store is opened for: to be read or changed, where a file must be there already; to be
/// checked, where it may also be damaged; to be created where it is not; or to foresee that, which
/// changes and creates nothing.
enum class EOpenStore { TO_READ, TO_CHECK, TO_CHANGE, TO_CREATE, TO_FORESEE };

/// Opens the store of a well-formed name. Null on failure, with the reason in strError.
std::shared_ptr<IStore> OpenStore(const std::string& strName, EOpenStore eOpen,
                                  std::string& strError);

/// What is wrong with the file of a store, if the store of this well-formed name is a file; empty
/// when nothing is.
std::string FindStoreDamage(const std::string& strName);

/// Does the store of a well-formed name outlive the program?
bool IsStoreKept(const std::string& strName);
