#include "common_service/directory.h"

#include <string>

#include "common_service/tarn_def.h"
#include "support/host_fixture.h"

namespace {

class Directories : public CHostTest {};

TEST_F(Directories, ThatAreNotSetFailUntouched) {
    std::string strDir = "untouched";
    EXPECT_EQ(HALD::get_lib_directory(strDir), ORVA_FAIL);
    EXPECT_EQ(HALD::get_config_directory(strDir), ORVA_FAIL);
    EXPECT_EQ(strDir, "untouched");
}

TEST_F(Directories, AreWhatWasSet) {
    HALD::set_lib_directory("/opt/lib");
    HALD::set_config_directory("/opt/etc");
    std::string strLib;
    std::string strConfig;
    EXPECT_EQ(HALD::get_lib_directory(strLib), 0);
    EXPECT_EQ(HALD::get_config_directory(strConfig), 0);
    EXPECT_EQ(strLib, "/opt/lib");
    EXPECT_EQ(strConfig, "/opt/etc");
}

}  // namespace
