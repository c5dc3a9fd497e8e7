#include "common/schedule_plugin.h"
#include "common_service/tarn_def.h"

namespace {

constexpr unsigned int JOB_IMAGE_ANALYSIS = 2001;
constexpr unsigned int JOB_IMAGE_EXPORT = 2002;

double TaskCount(const CContainerLoad& load) {
    return static_cast<double>(load.GetTaskCount());
}

/// Analyses and exports pictures: each task keeps a device busy, so that it spreads by their
/// number, and by the net among equals.
class CImagePlugin : public CSchedulePlugin {
public:
    CImagePlugin()
        : CSchedulePlugin({"image",
                           CONTAINER_TYPE_IMG_DEV,
                           {"ImgAnalysis", "ImgExport"},
                           {JOB_IMAGE_ANALYSIS, JOB_IMAGE_EXPORT},
                           &TaskCount}) {}
};

}  // namespace

extern "C" [[gnu::visibility("default")]] int CreatePlugin(IPlugin*& pPlugin) {
    static CImagePlugin plugin;
    pPlugin = &plugin;
    return ORVA_SUCCEED;
}
