#include "support/store_behaviour_suite.h"

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <vector>

#include "common_service/oper_common.h"
#include "common_service/tarn_def.h"
#include "support/text_document.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

namespace {

constexpr unsigned int NUMERIC_BUF_LEN = 100;
constexpr char PSZ_UNTOUCHED[] = "untouched";

/// Where the watchers report to; they are plain functions. A store may call them on a thread of its
/// own, some time after the write.
class CEvents {
public:
    void Clear() {
        const std::lock_guard<std::mutex> guard(m_mutex);
        m_paths.clear();
    }

    void Add(const std::string& strPath) {
        const std::lock_guard<std::mutex> guard(m_mutex);
        m_paths.push_back(strPath);
        m_condition.notify_all();
    }

    /// What was reported, once it is at least so much.
    std::vector<std::string> Wait(std::size_t count) {
        std::unique_lock<std::mutex> guard(m_mutex);
        m_condition.wait_for(guard, std::chrono::seconds(10),
                             [&] { return m_paths.size() >= count; });
        return m_paths;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_condition;
    std::vector<std::string> m_paths;
};

CEvents g_events;

void OnEvent(zhandle_t*, int, int, const char* path, void*) {
    g_events.Add(path);
}

void OnEventInFull(zhandle_t*, int type, int state, const char* path, void* watcherCtx) {
    g_events.Add(std::to_string(type) + " " + std::to_string(state) + " " + path +
                 (watcherCtx == nullptr ? "" : " with a context"));
}

void OnEventReadAgain(const std::string& strPath) {
    CTextDocument doc;
    bool bDataEmpty = false;
    COperCommon::GetDataFromZK(strPath.c_str(), reinterpret_cast<void*>(&ClusterNodeEventWatcher),
                               NUMERIC_BUF_LEN, &doc, bDataEmpty);
    g_events.Add(strPath + " " + doc.m_strText);
}

/// A JSON text of that many characters with the line feed that ends a writer's text.
std::string JsonOfLength(std::size_t length) {
    return "[\"" + std::string(length - 5, 'a') + "\"]\n";
}

/// What a read through the front left behind.
struct CReadResult {
    int iRet;
    bool bDataEmpty;
    std::string strText;

    bool operator==(const CReadResult& other) const {
        return iRet == other.iRet && bDataEmpty == other.bDataEmpty && strText == other.strText;
    }
};

std::ostream& operator<<(std::ostream& stream, const CReadResult& result) {
    return stream << "{" << result.iRet << ", " << result.bDataEmpty << ", " << result.strText
                  << "}";
}

CReadResult ReadInto(const std::string& strPath, CTextDocument& doc, bool bFlagBefore,
                     unsigned int uiBufLen = NUMERIC_BUF_LEN) {
    bool bDataEmpty = bFlagBefore;
    const int iRet =
        COperCommon::GetDataFromZK(strPath.c_str(), nullptr, uiBufLen, &doc, bDataEmpty);
    return {iRet, bDataEmpty, doc.m_strText};
}

CReadResult ReadFront(const std::string& strPath, unsigned int uiBufLen = NUMERIC_BUF_LEN) {
    CTextDocument doc(PSZ_UNTOUCHED);
    const CReadResult result = ReadInto(strPath, doc, true, uiBufLen);
    CTextDocument second(PSZ_UNTOUCHED);
    EXPECT_EQ(result, ReadInto(strPath, second, false, uiBufLen)) << "the flag's value before";
    return result;
}

int WriteFront(const std::string& strPath, CTextDocument doc,
               unsigned int uiBufLen = NUMERIC_BUF_LEN) {
    return COperCommon::SetDataToZK(strPath.c_str(), uiBufLen, &doc);
}

}  // namespace

std::ostream& operator<<(std::ostream& stream, const CStoreKind& kind) {
    return stream << kind.strName;
}

void StoreBehaviour::SetUp() {
    static std::atomic<unsigned int> uiCount{0};
    m_strRoot = "/Suite" + std::to_string(getpid()) + "_" + std::to_string(++uiCount);
    g_events.Clear();
    m_open = GetParam().makePlace();
    m_pStoreUnderTest = m_open();
    ASSERT_NE(m_pStoreUnderTest, nullptr);
    SetStore(m_pStoreUnderTest);
}

void StoreBehaviour::TearDown() {
    SetNodeEventHandler(nullptr);
    SetStore(nullptr);
}

std::string StoreBehaviour::Node(const std::string& strName) const {
    return m_strRoot + "/" + strName;
}

std::string StoreBehaviour::TextOf(const std::string& strName) const {
    CStoreAnswer answer;
    EXPECT_EQ(m_pStoreUnderTest->Read(Node(strName), nullptr, answer), 0);
    EXPECT_TRUE(answer.bExists);
    return answer.text.value_or("<no data>");
}

std::int64_t StoreBehaviour::VersionOf(const std::string& strName) const {
    CStoreAnswer answer;
    EXPECT_EQ(m_pStoreUnderTest->Read(Node(strName), nullptr, answer), 0);
    return answer.iVersion;
}

TEST_P(StoreBehaviour, AbsentNodeIsNoFailure) {
    CStoreAnswer answer{true, "old"};
    EXPECT_EQ(m_pStoreUnderTest->Read(Node("absent"), nullptr, answer), 0);
    EXPECT_FALSE(answer.bExists);
    EXPECT_EQ(answer.text, std::nullopt);
}

TEST_P(StoreBehaviour, TextReadsBackByteForByte) {
    const std::string strText = "{\"a\":\"\xe4\xb8\xad\",\"b\":\"'%s'\\\\\"}\n";
    EXPECT_EQ(m_pStoreUnderTest->Write(Node("node"), strText), 0);
    EXPECT_EQ(TextOf("node"), strText);
}

TEST_P(StoreBehaviour, LongTextReadsBackWhole) {
    const std::string strText = JsonOfLength(200000);
    EXPECT_EQ(m_pStoreUnderTest->Write(Node("node"), strText), 0);
    EXPECT_EQ(TextOf("node"), strText);
}

TEST_P(StoreBehaviour, WriteReplacesTheText) {
    EXPECT_EQ(m_pStoreUnderTest->Write(Node("node"), "[1,2,3]\n"), 0);
    EXPECT_EQ(m_pStoreUnderTest->Write(Node("node"), "[]\n"), 0);
    EXPECT_EQ(TextOf("node"), "[]\n");
}

TEST_P(StoreBehaviour, NodesOfLikeNamesAreDistinct) {
    EXPECT_EQ(m_pStoreUnderTest->Write(Node("node"), "[1]\n"), 0);
    EXPECT_EQ(m_pStoreUnderTest->Write(Node("Node"), "[2]\n"), 0);
    EXPECT_EQ(m_pStoreUnderTest->Write(Node("node%"), "[3]\n"), 0);
    EXPECT_EQ(TextOf("node"), "[1]\n");
    EXPECT_EQ(TextOf("Node"), "[2]\n");
    EXPECT_EQ(TextOf("node%"), "[3]\n");
}

TEST_P(StoreBehaviour, MissingParentsAreCreatedWithoutData) {
    EXPECT_EQ(m_pStoreUnderTest->Write(Node("top/middle/leaf"), "[]\n"), 0);
    for (const char* pszParent : {"top", "top/middle"}) {
        CStoreAnswer answer;
        EXPECT_EQ(m_pStoreUnderTest->Read(Node(pszParent), nullptr, answer), 0);
        EXPECT_TRUE(answer.bExists) << pszParent;
        EXPECT_TRUE(answer.text.value_or("").empty()) << pszParent;
    }
}

TEST_P(StoreBehaviour, ParentKeepsItsText) {
    EXPECT_EQ(m_pStoreUnderTest->Write(Node("top"), "[1]\n"), 0);
    EXPECT_EQ(m_pStoreUnderTest->Write(Node("top/leaf"), "[2]\n"), 0);
    EXPECT_EQ(TextOf("top"), "[1]\n");
}

TEST_P(StoreBehaviour, WatchOnAbsentNodeHearsOfItsCreation) {
    CStoreAnswer answer;
    EXPECT_EQ(m_pStoreUnderTest->Read(Node("top/node"), &OnEvent, answer), 0);
    EXPECT_EQ(m_pStoreUnderTest->Write(Node("top/node"), "[]\n"), 0);
    EXPECT_THAT(g_events.Wait(1), ElementsAre(Node("top/node")));
}

TEST_P(StoreBehaviour, WatchOnAbsentParentHearsOfItsCreation) {
    CStoreAnswer answer;
    EXPECT_EQ(m_pStoreUnderTest->Read(Node("top"), &OnEvent, answer), 0);
    EXPECT_EQ(m_pStoreUnderTest->Write(Node("top/leaf"), "[]\n"), 0);
    EXPECT_THAT(g_events.Wait(1), ElementsAre(Node("top")));
}

TEST_P(StoreBehaviour, WatchOnPresentNodeHearsOfAWrite) {
    EXPECT_EQ(m_pStoreUnderTest->Write(Node("node"), "[1]\n"), 0);
    CStoreAnswer answer;
    EXPECT_EQ(m_pStoreUnderTest->Read(Node("node"), &OnEvent, answer), 0);
    EXPECT_EQ(answer.text, "[1]\n");
    EXPECT_EQ(m_pStoreUnderTest->Write(Node("node"), "[2]\n"), 0);
    EXPECT_THAT(g_events.Wait(1), ElementsAre(Node("node")));
}

TEST_P(StoreBehaviour, WatcherIsToldOfTheEventInTheNumbersOfTheClient) {
    CStoreAnswer answer;
    EXPECT_EQ(m_pStoreUnderTest->Read(Node("top"), &OnEventInFull, answer), 0);
    EXPECT_EQ(m_pStoreUnderTest->Write(Node("top/node"), "[1]\n"), 0);
    EXPECT_THAT(g_events.Wait(1), ElementsAre("1 3 " + Node("top")));
    g_events.Clear();
    EXPECT_EQ(m_pStoreUnderTest->Read(Node("other"), &OnEventInFull, answer), 0);
    EXPECT_EQ(m_pStoreUnderTest->Write(Node("other"), "[1]\n"), 0);
    EXPECT_THAT(g_events.Wait(1), ElementsAre("1 3 " + Node("other")));
    g_events.Clear();
    EXPECT_EQ(m_pStoreUnderTest->Read(Node("other"), &OnEventInFull, answer), 0);
    EXPECT_EQ(m_pStoreUnderTest->Write(Node("other"), "[2]\n"), 0);
    EXPECT_THAT(g_events.Wait(1), ElementsAre("3 3 " + Node("other")));
}

TEST_P(StoreBehaviour, EveryWatcherOfANodeHearsOfIt) {
    CStoreAnswer answer;
    m_pStoreUnderTest->Read(Node("node"), &OnEvent, answer);
    m_pStoreUnderTest->Read(Node("node"), &OnEventInFull, answer);
    m_pStoreUnderTest->Write(Node("node"), "[1]\n");
    EXPECT_THAT(g_events.Wait(2), UnorderedElementsAre(Node("node"), "1 3 " + Node("node")));
}

TEST_P(StoreBehaviour, WatchFiresOnceHoweverOftenItWasSet) {
    CStoreAnswer answer;
    m_pStoreUnderTest->Read(Node("node"), &OnEvent, answer);
    m_pStoreUnderTest->Read(Node("node"), &OnEvent, answer);
    m_pStoreUnderTest->Write(Node("node"), "[1]\n");
    EXPECT_THAT(g_events.Wait(1), ElementsAre(Node("node")));
    m_pStoreUnderTest->Write(Node("node"), "[2]\n");

    // Events come in order: one that was too many would stand before this one.
    m_pStoreUnderTest->Read(Node("last"), &OnEvent, answer);
    m_pStoreUnderTest->Write(Node("last"), "[]\n");
    EXPECT_THAT(g_events.Wait(2), ElementsAre(Node("node"), Node("last")));
}

TEST_P(StoreBehaviour, WatchStaysSilentForOtherNodes) {
    m_pStoreUnderTest->Write(Node("node"), "[1]\n");
    CStoreAnswer answer;
    m_pStoreUnderTest->Read(Node("node"), &OnEvent, answer);
    m_pStoreUnderTest->Write(Node("node/child"), "[]\n");
    m_pStoreUnderTest->Write(Node("node2"), "[]\n");
    m_pStoreUnderTest->Write(Node("node"), "[2]\n");
    EXPECT_THAT(g_events.Wait(1), ElementsAre(Node("node")));
}

TEST_P(StoreBehaviour, WatchesHearOfACommit) {
    ASSERT_EQ(m_pStoreUnderTest->Write(Node("old"), "[0]\n"), 0);
    CStoreAnswer answer;
    for (const char* pszWatched : {"old", "top", "top/node"}) {
        m_pStoreUnderTest->Read(Node(pszWatched), &OnEventInFull, answer);
    }
    EXPECT_EQ(m_pStoreUnderTest->Commit({}, {{Node("top/node"), "[1]\n"}, {Node("old"), "[1]\n"}}),
              0);
    EXPECT_THAT(g_events.Wait(3),
                UnorderedElementsAre("1 3 " + Node("top"), "1 3 " + Node("top/node"),
                                     "3 3 " + Node("old")));
}

TEST_P(StoreBehaviour, WatchesHearNothingOfAFailedCommit) {
    CStoreAnswer answer;
    m_pStoreUnderTest->Read(Node("node"), &OnEvent, answer);
    EXPECT_EQ(m_pStoreUnderTest->Commit({{Node("other"), 5}}, {{Node("node"), "[1]\n"}}),
              STORE_CONDITION_FAILED);
    m_pStoreUnderTest->Read(Node("last"), &OnEvent, answer);
    EXPECT_EQ(m_pStoreUnderTest->Write(Node("last"), "[]\n"), 0);
    EXPECT_THAT(g_events.Wait(1), ElementsAre(Node("last")));
}

TEST_P(StoreBehaviour, HandlerMayReadTheNodeAndSetTheWatchAnew) {
    SetNodeEventHandler(&OnEventReadAgain);
    CTextDocument doc;
    bool bDataEmpty = false;
    EXPECT_EQ(COperCommon::GetDataFromZK(Node("node").c_str(),
                                         reinterpret_cast<void*>(&ClusterNodeEventWatcher),
                                         NUMERIC_BUF_LEN, &doc, bDataEmpty),
              STORE_NODE_ABSENT);
    EXPECT_EQ(WriteFront(Node("node"), CTextDocument("[1]\n")), 0);
    EXPECT_THAT(g_events.Wait(1), ElementsAre(Node("node") + " [1]\n"));
    EXPECT_EQ(WriteFront(Node("node"), CTextDocument("[2]\n")), 0);
    EXPECT_THAT(g_events.Wait(2), ElementsAre(Node("node") + " [1]\n", Node("node") + " [2]\n"));
}

TEST_P(StoreBehaviour, ThreadsNeverSeeHalfAText) {
    const std::vector<std::string> texts{JsonOfLength(3000), "[]\n"};
    EXPECT_EQ(m_pStoreUnderTest->Write(Node("shared"), texts.front()), 0);
    std::atomic<int> iFailures{0};
    std::vector<std::thread> threads;
    for (int iThread = 0; iThread < 4; ++iThread) {
        threads.emplace_back([&, iThread] {
            const std::string strOwn = Node("own/" + std::to_string(iThread));
            for (int iRound = 0; iRound < 20; ++iRound) {
                const std::string strText = "[" + std::to_string(iRound) + "]\n";
                CStoreAnswer shared;
                CStoreAnswer own;
                iFailures += m_pStoreUnderTest->Write(Node("shared"), texts[iRound % 2U]) != 0;
                iFailures += m_pStoreUnderTest->Write(strOwn, strText) != 0;
                iFailures += m_pStoreUnderTest->Read(Node("shared"), nullptr, shared) != 0;
                iFailures += m_pStoreUnderTest->Read(strOwn, nullptr, own) != 0;
                iFailures += own.text != strText;
                iFailures += std::count(texts.begin(), texts.end(), shared.text) != 1;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(iFailures, 0);
}

TEST_P(StoreBehaviour, ReadOfAbsentNodeFailsWithTheFlag) {
    EXPECT_EQ(ReadFront(Node("absent")), (CReadResult{STORE_NODE_ABSENT, true, PSZ_UNTOUCHED}));
}

TEST_P(StoreBehaviour, ReadOfNodeWithoutDataSucceedsWithTheFlag) {
    EXPECT_EQ(m_pStoreUnderTest->Write(Node("top/leaf"), "[]\n"), 0);
    EXPECT_EQ(ReadFront(Node("top")), (CReadResult{0, true, PSZ_UNTOUCHED}));
}

TEST_P(StoreBehaviour, EmptyTextIsLegalAndReadsAsNoData) {
    EXPECT_EQ(WriteFront(Node("node"), CTextDocument("[1]\n")), 0);
    EXPECT_EQ(WriteFront(Node("node"), CTextDocument("")), 0);
    EXPECT_EQ(ReadFront(Node("node")), (CReadResult{0, true, PSZ_UNTOUCHED}));
    EXPECT_THAT(m_logger.GetLinesOf("oper_common"), IsEmpty());
}

TEST_P(StoreBehaviour, ReadHandsTheTextToTheDocument) {
    EXPECT_EQ(WriteFront(Node("node"), CTextDocument("{\"a\":1}\n")), 0);
    EXPECT_EQ(ReadFront(Node("node")), (CReadResult{0, false, "{\"a\":1}\n"}));
}

TEST_P(StoreBehaviour, ReadAnswersWhatTheDocumentAnswered) {
    EXPECT_EQ(WriteFront(Node("node"), CTextDocument("[1]\n")), 0);
    CTextDocument doc;
    doc.m_iRet = 4711;
    EXPECT_EQ(ReadInto(Node("node"), doc, true), (CReadResult{4711, false, "[1]\n"}));
}

TEST_P(StoreBehaviour, ReadTakesTheLongestTextThatFits) {
    const std::string strText = JsonOfLength(NUMERIC_BUF_LEN - 1);
    EXPECT_EQ(m_pStoreUnderTest->Write(Node("node"), strText), 0);
    EXPECT_EQ(ReadFront(Node("node")), (CReadResult{0, false, strText}));
}

TEST_P(StoreBehaviour, ReadOfTooLongATextFailsAndNeverCuts) {
    EXPECT_EQ(m_pStoreUnderTest->Write(Node("node"), JsonOfLength(NUMERIC_BUF_LEN)), 0);
    CTextDocument doc(PSZ_UNTOUCHED);
    EXPECT_EQ(ReadInto(Node("node"), doc, true),
              (CReadResult{STORE_TEXT_TOO_LONG, false, PSZ_UNTOUCHED}));
    EXPECT_THAT(
        m_logger.GetLinesOf("oper_common"),
        ElementsAre(Err("read store node", STORE_TEXT_TOO_LONG, "oper_common", "GetDataFromZK",
                        "text of " + Node("node") + " has 100 characters, buffer 100")));
}

TEST_P(StoreBehaviour, DocumentThatThrowsOnReadIsACodeAndALine) {
    EXPECT_EQ(WriteFront(Node("node"), CTextDocument("[1]\n")), 0);
    CTextDocument doc(PSZ_UNTOUCHED);
    doc.m_onCall = [] { throw std::runtime_error("not an object"); };
    EXPECT_EQ(ReadInto(Node("node"), doc, true),
              (CReadResult{ORVA_DATA_INVALID, false, PSZ_UNTOUCHED}));
    doc.m_onCall = [] { throw 5; };
    EXPECT_EQ(ReadInto(Node("node"), doc, true),
              (CReadResult{ORVA_DATA_INVALID, false, PSZ_UNTOUCHED}));
    const std::string strMessage = "document of " + Node("node") + " threw an exception: ";
    EXPECT_THAT(m_logger.GetLinesOf("oper_common"),
                ElementsAre(Err("read store node", ORVA_DATA_INVALID, "oper_common",
                                "GetDataFromZK", strMessage + "not an object"),
                            Err("read store node", ORVA_DATA_INVALID, "oper_common",
                                "GetDataFromZK", strMessage + "unknown")));
}

TEST_P(StoreBehaviour, DocumentThatThrowsOnWriteLeavesTheText) {
    EXPECT_EQ(WriteFront(Node("node"), CTextDocument("[1]\n")), 0);
    CTextDocument doc("[2]\n");
    doc.m_onCall = [] { throw std::runtime_error("out of range"); };
    EXPECT_EQ(WriteFront(Node("node"), doc), ORVA_DATA_INVALID);
    EXPECT_EQ(TextOf("node"), "[1]\n");
    EXPECT_THAT(
        m_logger.GetLinesOf("oper_common"),
        ElementsAre(Err("write store node", ORVA_DATA_INVALID, "oper_common", "SetDataToZK",
                        "document of " + Node("node") + " threw an exception: out of range")));
}

TEST_P(StoreBehaviour, DocumentThatRefusesToWriteLeavesTheText) {
    EXPECT_EQ(WriteFront(Node("node"), CTextDocument("[1]\n")), 0);
    CTextDocument doc("[2]\n");
    doc.m_iRet = 4711;
    EXPECT_EQ(WriteFront(Node("node"), doc), 4711);
    EXPECT_EQ(TextOf("node"), "[1]\n");
    EXPECT_THAT(m_logger.GetLinesOf("oper_common"), IsEmpty());
}

TEST_P(StoreBehaviour, CutTextIsRefusedAndTheLastGoodTextStays) {
    EXPECT_EQ(WriteFront(Node("node"), CTextDocument("[1]\n")), 0);
    EXPECT_EQ(WriteFront(Node("node"), CTextDocument(JsonOfLength(NUMERIC_BUF_LEN + 1))),
              ORVA_DATA_INVALID);
    EXPECT_EQ(TextOf("node"), "[1]\n");
    EXPECT_THAT(m_logger.GetLinesOf("oper_common"),
                ElementsAre(Err(
                    "write store node", ORVA_DATA_INVALID, "oper_common", "SetDataToZK",
                    "text of " + Node("node") + " takes 99 of a buffer of 100 and is not whole")));
}

TEST_P(StoreBehaviour, TextOfWhichOnlyTheLineFeedDidNotFitIsWhole) {
    const std::string strText = JsonOfLength(NUMERIC_BUF_LEN);
    EXPECT_EQ(WriteFront(Node("node"), CTextDocument(strText)), 0);
    EXPECT_EQ(TextOf("node"), strText.substr(0, NUMERIC_BUF_LEN - 1));
}

TEST_P(StoreBehaviour, ExactlyFittingTextIsWritten) {
    const std::string strText = JsonOfLength(NUMERIC_BUF_LEN - 1);
    EXPECT_EQ(WriteFront(Node("node"), CTextDocument(strText)), 0);
    EXPECT_EQ(TextOf("node"), strText);
}

TEST_P(StoreBehaviour, WriteWarnsFromFourFifthsOfTheBuffer) {
    EXPECT_EQ(WriteFront(Node("node"), CTextDocument(JsonOfLength(79))), 0);
    EXPECT_THAT(m_logger.GetLinesOf("oper_common"), IsEmpty());
    EXPECT_EQ(WriteFront(Node("node"), CTextDocument(JsonOfLength(80))), 0);
    EXPECT_THAT(m_logger.GetLinesOf("oper_common"),
                ElementsAre(Warn("write store node", "oper_common", "SetDataToZK",
                                 "text of " + Node("node") + " takes 80 of a buffer of 100")));
    EXPECT_EQ(TextOf("node"), JsonOfLength(80));
}
