#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

/// Permissions do not bind the superuser: gives the right up for the test's length.
class CUnprivileged {
public:
    CUnprivileged() { EXPECT_TRUE(m_uid != 0 || seteuid(65534) == 0); }
    ~CUnprivileged() { EXPECT_EQ(seteuid(m_uid), 0); }
    CUnprivileged(const CUnprivileged&) = delete;
    CUnprivileged& operator=(const CUnprivileged&) = delete;

private:
    const uid_t m_uid = geteuid();
};
