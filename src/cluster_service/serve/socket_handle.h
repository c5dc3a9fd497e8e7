#pragma once

#include <unistd.h>

#include <utility>

/// Owns a file descriptor.
class CSocketHandle {
public:
    CSocketHandle() = default;
    explicit CSocketHandle(int iFd) : m_iFd(iFd) {}
    CSocketHandle(CSocketHandle&& other) noexcept : m_iFd(std::exchange(other.m_iFd, -1)) {}
    CSocketHandle& operator=(CSocketHandle&& other) noexcept {
        std::swap(m_iFd, other.m_iFd);
        return *this;
    }
    CSocketHandle(const CSocketHandle&) = delete;
    CSocketHandle& operator=(const CSocketHandle&) = delete;
    ~CSocketHandle() {
        if (m_iFd >= 0) {
            close(m_iFd);
        }
    }

    /// -1 when there is none.
    int Get() const { return m_iFd; }

    /// Leaves it to the caller.
    int Release() { return std::exchange(m_iFd, -1); }

private:
    int m_iFd = -1;
};
