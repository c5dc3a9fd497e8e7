#pragma once

#include <map>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "cluster_engine/forms.h"
#include "framework_service/base_data.h"
#include "framework_service/cluster_cloud_storage_znode_info.h"
#include "framework_service/resource_task.h"
#include "orva_plugin_service/tarn_orva_data.h"

/// How what is no form itself stands in one, beside json_fields.h: a Fields with `S` const writes.

/// A set, list or map as a list of another form of its elements, which turns into them and comes
/// from them.
template <typename Form, typename F, typename C>
void ListOf(F& form, const char* pszKey, C& values) {
    std::vector<Form> list(values.begin(), values.end());
    form.May(pszKey, list);
    if constexpr (!std::is_const_v<C>) {
        values.clear();
        for (const Form& one : list) {
            values.insert(values.end(), static_cast<typename C::value_type>(one));
        }
    }
}

/// A value as another form of it.
template <typename Form, typename F, typename V>
void As(F& form, const char* pszKey, V& value) {
    Form other(value);
    form.Need(pszKey, other);
    if constexpr (!std::is_const_v<V>) {
        value = static_cast<V>(other);
    }
}

/// An allocation of cloud storage.
struct CTableAllocation {
    ORVA_CLOUD_STORAGE_ALLOC_INFO info;

    CTableAllocation() = default;
    // NOLINTNEXTLINE(google-explicit-constructor): it is the record with a form
    CTableAllocation(ORVA_CLOUD_STORAGE_ALLOC_INFO of) : info(std::move(of)) {}
    explicit operator ORVA_CLOUD_STORAGE_ALLOC_INFO() const { return info; }

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Need("pool", self.info.cloudStorageCode);
        form.Need("allocated", self.info.allocStorage);
        form.Need("used", self.info.usedStorage);
        form.Need("free", self.info.freeStorage);
        form.Need("dns", self.info.dns);
        form.Need("path", self.info.path);
    }
};

/// CResourceTask with all that it has.
struct CTableTask {
    CTaskForm task;
    std::vector<CTableAllocation> allocations;

    CTableTask() = default;
    explicit CTableTask(const CResourceTask& of);
    explicit operator CResourceTask() const;

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.May("id", self.task.strTaskId);
        form.May("name", self.task.strName);
        form.May("movable", self.task.bMovable, true);
        form.May("costs", self.task.costs);
        form.May("private", self.task.privateInfo);
        form.May("allocations", self.allocations);
    }
};

/// An entry of the cloud storage document.
struct CStorageEntry {
    CloudStorageInfo info;

    CStorageEntry() = default;
    explicit CStorageEntry(CloudStorageInfo of) : info(std::move(of)) {}
    explicit operator CloudStorageInfo() const { return info; }

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Need("product_type", self.info.strProductType);
        form.Need("service_type", self.info.strServiceType);
        form.Need("storage", self.info.iReqStorage);
        form.Need("picture_storage", self.info.iReqPicStorage);
        form.Need("bit_rate", self.info.iLowPriorityBitRate);
        ListOf<CTableAllocation>(form, "allocations", self.info.allocInfo);
    }
};

/// An element of a map by text.
template <typename Form, typename Value = Form>
struct CNamed {
    using Element = std::pair<const std::string, Value>;
    std::string strName;
    Form value;

    CNamed() = default;
    explicit CNamed(const Element& element) : strName(element.first), value(element.second) {}
    explicit operator Element() const { return {strName, static_cast<Value>(value)}; }

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Need("name", self.strName);
        form.Need("value", self.value);
    }
};

/// An element of a set of containers.
struct CPlace {
    std::string strNodeId;
    std::string strType;

    CPlace() = default;
    explicit CPlace(const CContainerAddr& addr)
        : strNodeId(addr.GetNodeId()), strType(addr.GetContainerType()) {}
    explicit operator CContainerAddr() const { return {strNodeId, strType}; }

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Need("node", self.strNodeId);
        form.Need("type", self.strType);
    }
};

/// An element of a map by container.
template <typename T>
struct CPlaced {
    using Element = std::pair<const CContainerAddr, T>;
    CPlace place;
    T value;

    CPlaced() = default;
    explicit CPlaced(const Element& element) : place(element.first), value(element.second) {}
    explicit operator Element() const { return {CContainerAddr(place), value}; }

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        CPlace::Fields(form, self.place);
        form.Need("value", self.value);
    }
};
