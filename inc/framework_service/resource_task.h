#pragma once

#include <cstdint>
#include <list>
#include <string>

#include "common_service/xml.h"
#include "framework_service/base_data.h"
#include "framework_service/detail/copy_on_write.h"
#include "orva_plugin_service/tarn_orva_data.h"

/// One unit of scheduled work and what it costs. A plain value; no lock. A move is a copy.
class CResourceTask {
public:
    CResourceTask() = default;
    CResourceTask(const CResourceTask&) = default;
    CResourceTask& operator=(const CResourceTask&) = default;
    virtual ~CResourceTask() = default;

    const std::string& GetTaskId() const { return m_strTaskId; }
    void SetTaskId(const std::string& strTaskId) { m_strTaskId = strTaskId; }
    const std::string& GetTaskName() const { return m_strTaskName; }
    void SetTaskName(const std::string& strTaskName) { m_strTaskName = strTaskName; }
    int32_t GetCpu() const { return m_iCpu; }
    void SetCpu(int32_t iCpu) { m_iCpu = iCpu; }
    int32_t GetMem() const { return m_iMem; }
    void SetMem(int32_t iMem) { m_iMem = iMem; }
    int32_t GetIO() const { return m_iIO; }
    void SetIO(int32_t iIO) { m_iIO = iIO; }
    int32_t GetNet() const { return m_iNet; }
    void SetNet(int32_t iNet) { m_iNet = iNet; }
    int32_t GetDisk() const { return m_iDisk; }
    void SetDisk(int32_t iDisk) { m_iDisk = iDisk; }
    bool IsSupportShift() const { return m_bSupportShift; }
    void SetSupportShift(bool bSupportShift) { m_bSupportShift = bSupportShift; }

    /// The figures in a standard task file are without effect: the text leaves the cost as it is.
    bool SetCpu(const std::string& strData);
    bool SetMem(const std::string& strData);
    bool SetIO(const std::string& strData);
    bool SetNet(const std::string& strData);
    bool SetDisk(const std::string& strData);

    /// Adds a pair of private information; a key that is there keeps its value. Always 0.
    int InsertSingleKeyValue(const std::string& strKey, const std::string& strValue);

    /// Returns 0 and the value; or, logged, ORVA_FAIL with the argument untouched.
    int GetValueByKey(const std::string& strKey, std::string& strValue) const;

    /// The same, as a number: what HALD::CToolHelp::StrToInt makes of the value.
    int GetIntValueByKey(const std::string& strKey, int& iValue) const;

    /// Replaces the private information by the key and value pairs at the cursor. Returns what the
    /// XML helper answers; after a failure the former pairs are gone too.
    int ParsePrivateInfoFromXml(PELU::CXml& xml);

    /// Replaces the argument by a copy.
    void GetAllPrivateInfo(KeyValueMap& privateInfo) const;

    /// Appends the record to the allocation list.
    void SetAllocInfoList(ORVA_CLOUD_STORAGE_ALLOC_INFO allocInfo);

    /// Appends copies behind what the argument holds.
    void GetAllocInfoList(std::list<ORVA_CLOUD_STORAGE_ALLOC_INFO>& allocInfoList) const;

private:
    friend class CFrameworkInternal;

    std::string m_strTaskId;
    std::string m_strTaskName;
    std::string m_strTaskType;
    bool m_bSupportShift = true;
    int32_t m_iCpu = 0;
    int32_t m_iMem = 0;
    int32_t m_iIO = 0;
    int32_t m_iNet = 0;
    int32_t m_iDisk = 0;
    CCopyOnWrite<std::list<ORVA_CLOUD_STORAGE_ALLOC_INFO>> m_allocInfoList;
    CCopyOnWrite<KeyValueMap> m_privateInfo;
};
