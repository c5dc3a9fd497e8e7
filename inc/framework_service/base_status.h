#pragma once

/// The root of the status records.
class CBaseStatusInfo {
public:
    CBaseStatusInfo() = default;
    CBaseStatusInfo(const CBaseStatusInfo&) = default;
    CBaseStatusInfo& operator=(const CBaseStatusInfo&) = default;
    virtual ~CBaseStatusInfo() = default;

    /// Always true.
    bool IsParamValid();

    /// Does nothing.
    void Print();
};
