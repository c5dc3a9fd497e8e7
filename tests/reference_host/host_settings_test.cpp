#include "reference_host/host_settings.h"

#include "common_service/directory.h"
#include "common_service/global_config.h"
#include "common_service/tarn_conf.h"
#include "common_service/tarn_def.h"
#include "support/host_fixture.h"

namespace {

class HostSettings : public CHostTest {};

TEST_F(HostSettings, AreWhatTheContractAnswers) {
    Configure({"c01", "10.0.0.1", "/opt/lib", "/opt/etc"});
    EXPECT_EQ(CTARNConf::m_oConf.GetCstClusterCode(), "c01");
    EXPECT_EQ(CGlobalConfig::Instance().GetLocalIp(), "10.0.0.1");
    std::string strLib;
    std::string strConfig;
    EXPECT_EQ(HALD::get_lib_directory(strLib), 0);
    EXPECT_EQ(HALD::get_config_directory(strConfig), 0);
    EXPECT_EQ(strLib, "/opt/lib");
    EXPECT_EQ(strConfig, "/opt/etc");
}

TEST_F(HostSettings, AreReplacedTogether) {
    Configure({"c01", "10.0.0.1", "/opt/lib", "/opt/etc"});
    Configure({"c02", "", "", ""});
    EXPECT_EQ(GetHostSettings().strClusterCode, "c02");
    EXPECT_EQ(CGlobalConfig::Instance().GetLocalIp(), "");
}

TEST_F(HostSettings, DirectoriesThatAreNotSetFailUntouched) {
    std::string strDir = "untouched";
    EXPECT_EQ(HALD::get_lib_directory(strDir), ORVA_FAIL);
    EXPECT_EQ(HALD::get_config_directory(strDir), ORVA_FAIL);
    EXPECT_EQ(strDir, "untouched");
}

}  // namespace
