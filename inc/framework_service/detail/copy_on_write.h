#pragma once

#include <atomic>
#include <utility>

/// A value that behaves as its own copy everywhere and costs next to nothing to copy: copies share
/// one T until one of them is edited. As with a plain T, one object is for one thread at a time,
/// while copies of it may be used by any threads at once.
template <typename T>
class CCopyOnWrite {
public:
    /// An empty T, without an allocation.
    CCopyOnWrite() noexcept = default;

    CCopyOnWrite(T value) : m_pShared(new CShared{std::move(value)}) {}

    CCopyOnWrite(const CCopyOnWrite& other) noexcept : m_pShared(other.m_pShared) {
        if (m_pShared != nullptr) {
            m_pShared->uiOwners.fetch_add(1, std::memory_order_relaxed);
        }
    }

    CCopyOnWrite(CCopyOnWrite&& other) noexcept
        : m_pShared(std::exchange(other.m_pShared, nullptr)) {}

    CCopyOnWrite& operator=(CCopyOnWrite other) noexcept {
        std::swap(m_pShared, other.m_pShared);
        return *this;
    }

    ~CCopyOnWrite() {
        if (m_pShared != nullptr &&
            m_pShared->uiOwners.fetch_sub(1, std::memory_order_acq_rel) == 1) {
            delete m_pShared;
        }
    }

    const T& operator*() const { return m_pShared != nullptr ? m_pShared->value : Empty(); }
    const T* operator->() const { return &**this; }

    /// The T for writing, shared with nobody. Lives until this object is copied, assigned or gone.
    T& Edit() {
        // Acquire: what an owner that has just let go did with the T is over before it is written.
        if (m_pShared == nullptr || m_pShared->uiOwners.load(std::memory_order_acquire) != 1) {
            *this = CCopyOnWrite(T(**this));
        }
        return m_pShared->value;
    }

private:
    struct CShared {
        T value;
        std::atomic<unsigned int> uiOwners{1};
    };

    /// Never destroyed: objects that outlive static destruction may still read it.
    static const T& Empty() {
        static const T& empty = *new T();
        return empty;
    }

    CShared* m_pShared = nullptr;
};
