#include "cluster_engine/journal.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "cluster_engine/event_text.h"

namespace {

constexpr char PSZ_WHOLE[] =
    "{\"journal\":1}\n"
    "{\"input\":\"leave\",\"node\":\"n1\",\"time\":7}\n"
    "{\"commit\":0,\"digest\":\"cbf29ce484222325\"}\n"
    "{\"input\":\"tick\",\"time\":8}\n";

CInput Leaving() {
    CLeave leave;
    leave.strNodeId = "n1";
    return {7, leave};
}

TEST(Journal, WritesALineForEachInputAndCommit) {
    std::ostringstream stream;
    CJournalWriter writer(stream, CJournalHeader());
    writer.Write(Leaving());
    writer.Write(CJournalCommit{0, CRunDigest().Text()});
    writer.Write(CInput{8, CTick()});
    EXPECT_EQ(stream.str(), PSZ_WHOLE);
    EXPECT_TRUE(writer.IsGood());
}

TEST(Journal, ReadsBackWhatItWrote) {
    std::istringstream stream(PSZ_WHOLE);
    CJournalReader reader(stream);
    CJournalEntry entry;
    ASSERT_TRUE(reader.Next(entry));
    EXPECT_EQ(InputToJson(std::get<CInput>(entry)), InputToJson(Leaving()));
    ASSERT_TRUE(reader.Next(entry));
    EXPECT_EQ(std::get<CJournalCommit>(entry).strDigest, "cbf29ce484222325");
    ASSERT_TRUE(reader.Next(entry));
    EXPECT_EQ(reader.GetLine(), 4U);
    EXPECT_FALSE(reader.Next(entry));
    EXPECT_EQ(reader.GetFault().eFault, EJournalFault::NONE);
}

TEST(Journal, BeginsWithAStateAndTellsWhatTheEngineCouldNotKnow) {
    CJournalHeader header;
    header.settings = CEngineSettings();
    header.settings->iSilence = 40;
    header.state["cluster"] = "it";
    header.texts["/CloudX/Version"] = "{}";
    std::ostringstream written;
    CJournalWriter writer(written, header);
    writer.Write(CChance(CStoreFailed{2, -4}));
    writer.Write(CChance(CForeignText{1, "/CloudX/Cluster", true, "[]"}));
    writer.Write(CChance(CLateCall{1, 0, 12}));
    writer.Write(CChance(CStillBusy{"recording"}));
    EXPECT_EQ(written.str(), R"({"journal":1,"settings":{"silence":40},"state":{"cluster":"it"},)"
                             R"("texts":{"/CloudX/Version":"{}"}})"
                             "\n"
                             R"({"code":-4,"store_failed":2})"
                             "\n"
                             R"({"foreign_text":1,"path":"/CloudX/Cluster","text":"[]"})"
                             "\n"
                             R"({"decision":12,"late_call":1})"
                             "\n"
                             R"({"still_busy":"recording"})"
                             "\n");
    std::istringstream stream(written.str());
    CJournalReader reader(stream);
    std::ostringstream again;
    CJournalEntry entry;
    ASSERT_TRUE(reader.Next(entry));
    CJournalWriter writerAgain(again, reader.GetHeader());
    do {
        writerAgain.Write(std::get<CChance>(entry));
    } while (reader.Next(entry));
    EXPECT_EQ(again.str(), written.str());
}

TEST(Journal, SaysWhenALineCannotBeWritten) {
    std::ostringstream stream;
    CJournalWriter writer(stream, CJournalHeader());
    stream.setstate(std::ios::badbit);
    writer.Write(Leaving());
    EXPECT_FALSE(writer.IsGood());
}

struct CFaultCase {
    const char* pszName;
    std::string strText;
    const char* pszFault;
};

class JournalFault : public ::testing::TestWithParam<CFaultCase> {};

TEST_P(JournalFault, IsNamedWithItsLine) {
    std::istringstream stream(GetParam().strText);
    CJournalReader reader(stream);
    CJournalEntry entry;
    while (reader.Next(entry)) {
    }
    EXPECT_EQ(reader.GetFault().Text(), GetParam().pszFault);
    EXPECT_FALSE(reader.Next(entry)) << "nothing is read behind a fault";
}

INSTANTIATE_TEST_SUITE_P(
    Each, JournalFault,
    ::testing::Values(
        CFaultCase{"Empty", "", "line 0: the file is empty (no_header)"},
        CFaultCase{"NoHeader", "{\"input\":\"tick\",\"time\":8}\n",
                   "line 1: \"journal\": is missing (no_header)"},
        CFaultCase{"ForeignVersion", "{\"journal\":2}\n",
                   "line 1: \"journal\": must be 1: another release wrote this file "
                   "(foreign_version)"},
        CFaultCase{"NoNumber", "{\"journal\":\"1\"}\n",
                   "line 1: \"journal\": must be a whole number from -2147483648 to 2147483647 "
                   "(bad_field)"},
        CFaultCase{"Cut", std::string(PSZ_WHOLE) + "{\"input\":\"ti",
                   "line 5: the file ends within this line (cut)"},
        CFaultCase{"UnknownKind", "{\"journal\":1}\n{\"input\":\"dance\",\"time\":8}\n",
                   "line 2: \"input\": is no kind of input (unknown_kind)"},
        CFaultCase{"BadChance", "{\"journal\":1}\n{\"store_failed\":1}\n",
                   "line 2: \"code\": is missing (bad_field)"},
        CFaultCase{"BadSettings", "{\"journal\":1,\"settings\":{\"silence\":\"long\"}}\n",
                   "line 1: \"settings.silence\": must be a whole number from "
                   "-9223372036854775808 to 9223372036854775807 (bad_field)"},
        CFaultCase{"NoKind", "{\"journal\":1}\n{\"time\":8}\n",
                   "line 2: \"input\": must name the kind of the input (unknown_kind)"},
        CFaultCase{"BadField", "{\"journal\":1}\n{\"input\":\"leave\",\"time\":8}\n",
                   "line 2: \"node\": is missing (bad_field)"},
        CFaultCase{"NoObject", "{\"journal\":1}\n[]\n", "line 2: must be an object (bad_field)"}),
    [](const auto& one) { return one.param.pszName; });

TEST(Journal, ALineWithinTheFileThatIsNoJsonIsNotACutOne) {
    std::istringstream stream("{\"journal\":1}\n{\"input\":\n{\"input\":\"tick\",\"time\":8}\n");
    CJournalReader reader(stream);
    CJournalEntry entry;
    EXPECT_FALSE(reader.Next(entry));
    EXPECT_EQ(reader.GetFault().eFault, EJournalFault::NO_JSON);
    EXPECT_EQ(reader.GetFault().uiLine, 2U);
}

TEST(RunDigest, DependsOnEveryAnswerAndEventInItsOrder) {
    CAnswer answer;
    answer.strNvr = "nvr-1";
    CEvent event;
    event.strNodeId = "n1";
    CRunDigest first;
    first.Take(answer);
    first.Take(event);
    CRunDigest again;
    again.Take(answer);
    again.Take(event);
    CRunDigest turned;
    turned.Take(event);
    turned.Take(answer);
    EXPECT_EQ(first.Text(), again.Text());
    EXPECT_NE(first.Text(), turned.Text());
    EXPECT_NE(first.Text(), CRunDigest().Text());
}

TEST(EventText, TellsWhatMovedFromWhereAndWhy) {
    CEvent event;
    event.eEvent = EEvent::SHIFTED;
    event.strNodeId = "n2";
    event.strType = "MeroRecord";
    event.strTaskId = "camera-7";
    event.uiTasks = 1;
    event.strFrom = "n1";
    event.strCause = "its container is silent";
    EXPECT_EQ(EventSubject(event), "n2 MeroRecord");
    EXPECT_EQ(EventSentence(event), "takes over camera-7 from n1: its container is silent");
}

TEST(EventText, CountsTasksAndLeavesOutWhatThereIsNot) {
    CEvent event;
    event.eEvent = EEvent::ENDED;
    event.uiTasks = 3;
    EXPECT_EQ(EventSubject(event), "cluster");
    EXPECT_EQ(EventSentence(event), "ends 3 tasks");
    event.uiTasks = 1;
    EXPECT_EQ(EventSentence(event), "ends 1 task");
}

TEST(EventText, IsWholeForEveryEvent) {
    CEvent event;
    event.strCause = "cause";
    for (std::size_t ui = 0; ui < std::size(CEnumNames<EEvent>::NAMES); ++ui) {
        event.eEvent = static_cast<EEvent>(ui);
        EXPECT_THAT(EventSentence(event),
                    ::testing::AllOf(::testing::Not(::testing::IsEmpty()),
                                     ::testing::Not(::testing::HasSubstr("{"))));
    }
}

}  // namespace
