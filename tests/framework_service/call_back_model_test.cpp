#include <list>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "common_service/tarn_def.h"
#include "common_service/tool_help.h"
#include "support/acting_logger.h"
#include "support/model_values.h"
#include "support/registry_fixture.h"

namespace {

CContainerAddr AddressOf(const std::string& strNodeId) {
    return {strNodeId, CONTAINER_TYPE_CLOUD_STORAGE};
}

/// A container of the model: plain fields.
struct CPlain {
    bool bOnline = true;
    bool bDoing = false;
    bool bNeedUpdate = true;
    bool bReported = false;
    std::list<CResourceTask> tasks;
    int32_t iTotalNet = 0;
    std::map<std::string, std::string> texts;
    std::map<std::string, int32_t> numbers;
    bool bUpdateFlag = false;
    KeyValueMap extended;
};

Shown Show(const CPlain& plain) {
    const auto textOf = [&plain](const char* pszKey) {
        const auto it = plain.texts.find(pszKey);
        return it != plain.texts.end() ? it->second : std::string();
    };
    const auto numberOf = [&plain](const char* pszKey) {
        const auto it = plain.numbers.find(pszKey);
        return testing::PrintToString(it != plain.numbers.end() ? it->second : 0);
    };
    return {{"Online", testing::PrintToString(plain.bOnline)},
            {"FaultStatus", testing::PrintToString(plain.bDoing)},
            {"NeedUpdate", testing::PrintToString(plain.bNeedUpdate)},
            {"HasReported", testing::PrintToString(plain.bReported)},
            {"Tasks", testing::PrintToString(ShowAll(plain.tasks))},
            {"TaskTotalNet", testing::PrintToString(plain.iTotalNet)},
            {"ProductType", textOf(PSZ_TASK_PRODUCT_TYPE)},
            {"ServiceType", textOf(PSZ_TASK_SERVICE_TYPE)},
            {"ReqStorage", numberOf(PSZ_TASK_REQ_STORAGE)},
            {"ReqPicStorage", numberOf(PSZ_TASK_REQ_PIC_STORAGE)},
            {"BitRate", numberOf(PSZ_TASK_LOW_PRI_BIT_RATE)},
            {"TranBandWidth", numberOf(PSZ_TASK_TRAN_BAND_WIDTH)},
            {"UpdateFlag", testing::PrintToString(plain.bUpdateFlag)},
            {"PrivateInfo", testing::PrintToString(plain.extended)}};
}

/// The registry as a map of objects, changed step by step. Whoever works on an object that has left
/// the map works on for nobody.
class CModel {
public:
    explicit CModel(std::function<void()> line) : m_line(std::move(line)) {}

    void Add(const std::string& strId) {
        std::shared_ptr<CPlain>& pPlain = m_table[strId];
        if (pPlain == nullptr) {
            pPlain = std::make_shared<CPlain>();
        }
        pPlain->bOnline = true;
        pPlain->bNeedUpdate = true;
    }

    void Remove(const std::string& strId) { m_table.erase(strId); }

    void Renew() {
        for (auto& [strId, pPlain] : m_table) {
            pPlain = std::make_shared<CPlain>(*pPlain);
        }
    }

    void SetOnline(const std::string& strId, bool bOnline) {
        if (const auto pPlain = Find(strId); pPlain != nullptr) {
            pPlain->bOnline = bOnline;
            if (!bOnline) {
                m_line();
            }
        }
    }

    void SetDoing(const std::string& strId, bool bDoing) {
        if (const auto pPlain = Find(strId); pPlain != nullptr) {
            pPlain->bDoing = bDoing;
            m_line();
        }
    }

    void Report(const std::string& strId, const std::list<CResourceTask>& tasks, int iMsgType) {
        const auto pPlain = Find(strId);
        if (pPlain == nullptr) {
            return;
        }
        pPlain->tasks = tasks;
        SumNet(*pPlain);
        for (const CResourceTask& task : tasks) {
            if (m_table.count(strId) == 0 || m_table[strId] != pPlain) {
                return;
            }
            if (iMsgType != ALLOC_CLOUD_STORAGE_NOTIFY_RSP) {
                TakeFigures(strId, pPlain, task);
            }
        }
        pPlain->bNeedUpdate = pPlain->bNeedUpdate && !pPlain->bReported;
        pPlain->bReported = true;
    }

    void AddTasks(const std::string& strId, const std::list<CResourceTask>& tasks) {
        if (const auto pPlain = Find(strId); pPlain != nullptr) {
            pPlain->tasks.insert(pPlain->tasks.end(), tasks.begin(), tasks.end());
            for (const CResourceTask& task : tasks) {
                pPlain->iTotalNet += task.GetNet();
            }
            pPlain->bOnline = true;
        }
    }

    void RemoveTask(const std::string& strId, const std::string& strTaskId) {
        if (const auto pPlain = Find(strId); pPlain != nullptr) {
            pPlain->tasks.remove_if(
                [&](const CResourceTask& task) { return task.GetTaskId() == strTaskId; });
            SumNet(*pPlain);
        }
    }

    void SetFlag(const std::string& strService, bool bFlag) {
        for (const auto& [strId, pPlain] : m_table) {
            if (pPlain->texts[PSZ_TASK_SERVICE_TYPE] == strService) {
                pPlain->bUpdateFlag = bFlag;
            }
        }
    }

    void SetExtended(const std::string& strId, const std::string& strValue) {
        if (m_table.count(strId) != 0) {
            m_table[strId]->extended["k"] = strValue;
        }
    }

    std::map<std::string, Shown> ShowTable() const {
        std::map<std::string, Shown> shown;
        for (const auto& [strId, pPlain] : m_table) {
            shown.emplace(strId, Show(*pPlain));
        }
        return shown;
    }

private:
    std::shared_ptr<CPlain> Find(const std::string& strId) {
        const auto it = m_table.find(strId);
        if (it != m_table.end()) {
            return it->second;
        }
        m_line();
        return nullptr;
    }

    static void SumNet(CPlain& plain) {
        plain.iTotalNet = 0;
        for (const CResourceTask& task : plain.tasks) {
            plain.iTotalNet += task.GetNet();
        }
    }

    void TakeFigures(const std::string& strId, const std::shared_ptr<CPlain>& pPlain,
                     const CResourceTask& task) {
        KeyValueMap privateInfo;
        task.GetAllPrivateInfo(privateInfo);
        std::string strValue;
        for (const char* pszKey :
             {PSZ_TASK_PRODUCT_TYPE, PSZ_TASK_SERVICE_TYPE, PSZ_TASK_REQ_STORAGE,
              PSZ_TASK_REQ_PIC_STORAGE, PSZ_TASK_LOW_PRI_BIT_RATE, PSZ_TASK_TRAN_BAND_WIDTH}) {
            if (privateInfo.count(pszKey) != 0) {
                strValue = privateInfo[pszKey];
            } else {
                m_line();
            }
            pPlain->texts[pszKey] = strValue;
            pPlain->numbers[pszKey] = HALD::CToolHelp::StrToInt(strValue, false);
        }
        if (m_table.count(strId) != 0 && m_table[strId] == pPlain) {
            pPlain->bUpdateFlag =
                pPlain->bUpdateFlag || pPlain->texts[PSZ_TASK_SERVICE_TYPE] == "MPU-R";
            m_line();
        }
    }

    std::function<void()> m_line;
    std::map<std::string, std::shared_ptr<CPlain>> m_table;
};

/// The registry under the model's names.
class CReal {
public:
    static void Add(const std::string& strId) {
        Mgr().AddContainer(
            {{AddressOf(strId), MakeContainer(strId, CONTAINER_TYPE_CLOUD_STORAGE)}});
    }
    static void Remove(const std::string& strId) { Mgr().RemoveContainer(AddressOf(strId)); }
    static void Renew() { Mgr().Init(AllContainers()); }
    static void SetOnline(const std::string& strId, bool bOnline) {
        Mgr().SetContainerOnline(AddressOf(strId), bOnline);
    }
    static void SetDoing(const std::string& strId, bool bDoing) {
        Mgr().SetContainerDoingFaultShift(AddressOf(strId), bDoing);
    }
    static void Report(const std::string& strId, const std::list<CResourceTask>& tasks,
                       int iMsgType) {
        Mgr().SetResourceTask(AddressOf(strId), tasks, iMsgType);
    }
    static void AddTasks(const std::string& strId, const std::list<CResourceTask>& tasks) {
        Mgr().AddResourceTask(AddressOf(strId), tasks);
    }
    static void RemoveTask(const std::string& strId, const std::string& strTaskId) {
        Mgr().RemoveResourceTask(AddressOf(strId), {strTaskId});
    }
    static void SetFlag(const std::string& strService, bool bFlag) {
        Mgr().SetUptadeFlag(strService, bFlag);
    }
    static void SetExtended(const std::string& strId, const std::string& strValue) {
        Mgr().SetExtParamValueByKey(AddressOf(strId), "k", strValue);
    }

    /// What the containers show of that which the model has.
    static std::map<std::string, Shown> ShowTable() {
        const Shown known = Show(CPlain());
        std::map<std::string, Shown> shown;
        for (const auto& [addr, container] : AllContainers()) {
            for (const auto& [strName, strValue] : Show(container)) {
                if (known.count(strName) != 0) {
                    shown[addr.GetNodeId()][strName] = strValue;
                }
            }
        }
        return shown;
    }

private:
    static CContainerMgr& Mgr() { return CContainerMgr::Instance(); }
};

CResourceTask DrawTask(CDice& dice) {
    CResourceTask task = MakeTask(dice.OneOf({"t", "u", "v"}), 0, static_cast<int>(dice.Below(5)));
    for (const char* pszKey :
         {PSZ_TASK_PRODUCT_TYPE, PSZ_TASK_SERVICE_TYPE, PSZ_TASK_REQ_STORAGE,
          PSZ_TASK_REQ_PIC_STORAGE, PSZ_TASK_LOW_PRI_BIT_RATE, PSZ_TASK_TRAN_BAND_WIDTH}) {
        if (dice.Below(4) != 0) {
            task.InsertSingleKeyValue(pszKey, dice.OneOf({"1", "2", "3", "MPU-R"}));
        }
    }
    return task;
}

/// One operation, the same on both for the same dice.
template <typename Target>
void Act(Target& target, CDice& dice) {
    const std::string strId = dice.OneOf({"n0", "n1", "n2", "n3"});
    const bool bFlag = dice.Below(2) != 0;
    std::list<CResourceTask> tasks;
    for (std::size_t i = dice.Below(3); i > 0; --i) {
        tasks.push_back(DrawTask(dice));
    }
    switch (dice.Below(12)) {
        case 0:
        case 1:
            return target.Add(strId);
        case 2:
            return target.Remove(strId);
        case 3:
            return target.Renew();
        case 4:
            return target.SetOnline(strId, bFlag);
        case 5:
            return target.SetDoing(strId, bFlag);
        case 6:
            return target.AddTasks(strId, tasks);
        case 7:
            return target.RemoveTask(strId, "t");
        case 8:
            return target.SetFlag("MPU-R", bFlag);
        case 9:
            return target.SetExtended(strId, bFlag ? "a" : "b");
        default:
            return target.Report(strId, tasks,
                                 dice.Below(8) == 0 ? ALLOC_CLOUD_STORAGE_NOTIFY_RSP : 0);
    }
}

/// Acts in a line of every third, as deep as three lines within each other.
template <typename Target>
class CHost {
public:
    CHost(Target& target, unsigned int uiSeed) : m_target(target), m_dice(uiSeed) {}

    void InLine() {
        ++m_iLines;
        if (m_iDepth <= 3 && m_dice.Below(3) == 0) {
            Step();
        }
    }

    void Step() {
        ++m_iDepth;
        Act(m_target, m_dice);
        --m_iDepth;
    }

    int GetLines() const { return m_iLines; }

private:
    Target& m_target;
    CDice m_dice;
    int m_iDepth = 0;
    int m_iLines = 0;
};

class CallBackModel : public CRegistryTest {};

TEST_F(CallBackModel, RegistryIsWhatTheStepsMakeOfItWhateverItsLinesDo) {
    for (unsigned int uiSeed = 0; uiSeed < 40; ++uiSeed) {
        CContainerMgr::Instance().Init({});
        CReal real;
        CHost<CReal> realHost(real, uiSeed);
        CActingLogger logger;
        logger.SetAction([&](const std::string&) { realHost.InLine(); });
        logger.ActInLinesOfActions();
        OMAdapter::getInstance().setLogger(&logger);

        CHost<CModel>* pModelHost = nullptr;
        CModel model([&pModelHost] { pModelHost->InLine(); });
        CHost<CModel> modelHost(model, uiSeed);
        pModelHost = &modelHost;
        for (int iStep = 0; iStep < 100; ++iStep) {
            realHost.Step();
            modelHost.Step();
            ASSERT_EQ(realHost.GetLines(), modelHost.GetLines()) << uiSeed << ", " << iStep;
            ASSERT_EQ(real.ShowTable(), model.ShowTable()) << uiSeed << ", " << iStep;
        }
        OMAdapter::getInstance().setLogger(nullptr);
    }
}

}  // namespace
