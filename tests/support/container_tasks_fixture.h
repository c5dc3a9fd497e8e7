#pragma once

#include <limits>
#include <string>

#include "framework_service/container.h"
#include "support/host_fixture.h"
#include "support/model_values.h"

namespace container_tasks {

inline constexpr int32_t INT32_TOP = std::numeric_limits<int32_t>::max();
inline constexpr int32_t INT32_BOTTOM = std::numeric_limits<int32_t>::min();
inline constexpr int REPORT = 3979;

class ContainerTasks : public CHostTest {
protected:
    void ExpectTotals(int iDisk, int iNet) const {
        EXPECT_EQ(m_container.GetTaskTotalDisk(), iDisk);
        EXPECT_EQ(m_container.GetTaskTotalNet(), iNet);
    }

    CContainer m_container = MakeContainer("N1", "Cam");
};

inline CLogLine Failed(const std::string& strOperation, const std::string& strFunction,
                       const std::string& strMessage) {
    return Err(strOperation, 1, "container", strFunction, strMessage);
}

}  // namespace container_tasks
