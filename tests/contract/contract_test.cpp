#include "contract/host_contract.h"

using namespace host_contract;

namespace {

/// What the host was asked before this executable's own objects were built, and so before main.
const Calls CALLS_WHILE_LOADING = CMinimalHost::Instance().m_calls;

TEST_F(HostContract, LoadingTheLibraryCallsNoHost) {
    EXPECT_EQ(CALLS_WHILE_LOADING, Calls());
}

}  // namespace
