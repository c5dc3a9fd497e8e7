#include <algorithm>
#include <filesystem>

#include "command/store_document.h"
#include "service_fixture.h"

using ::testing::Eq;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Optional;
using ::testing::SizeIs;

namespace {

namespace fs = std::filesystem;

constexpr char PSZ_VERSION_TEXT[] = R"({"DecisionVerNum":1,"MasterVerNum":2})";

using ImportExport = CServiceTest;

TEST_F(ImportExport, SampleComesBackByteByByte) {
    const CProcessResult imported = Run({"import", PSZ_SAMPLE_DIR});
    ASSERT_EQ(imported.iExitCode, 0) << imported.strErrors;
    const CProcessResult exported = Run({"export", "out/deep"});
    ASSERT_EQ(exported.iExitCode, 0) << exported.strErrors;
    for (const CStoreDocument& document : StoreDocuments()) {
        const std::string strText = ReadText(std::string(PSZ_SAMPLE_DIR "/") + document.pszFile);
        EXPECT_THAT(strText, ::testing::Not(IsEmpty())) << document.pszFile;
        EXPECT_EQ(ReadText(File("out/deep/") + document.pszFile), strText);
        EXPECT_THAT(Stored(document.node.pszSuffix), Optional(strText));
        EXPECT_THAT(imported.strOutput,
                    HasSubstr(std::string(document.pszFile) + ": imported to "));
        EXPECT_THAT(exported.strOutput,
                    HasSubstr(std::string("exported to out/deep/") + document.pszFile));
    }
    const auto files = fs::directory_iterator(File("out/deep"));
    EXPECT_EQ(static_cast<std::size_t>(std::distance(fs::begin(files), fs::end(files))),
              StoreDocuments().size())
        << "nothing but the documents is left behind";
}

TEST_F(ImportExport, DocumentsAreKeptApartByClusterCode) {
    WriteDocument("version.json", PSZ_VERSION_TEXT);
    ASSERT_EQ(Run({"--cluster-code", "Other", "import", "documents"}).iExitCode, 0);
    EXPECT_EQ(Stored("/Version"), std::nullopt);
    const CProcessResult result = Run({"export", "out"});
    EXPECT_EQ(result.iExitCode, 2);
    EXPECT_THAT(result.strErrors,
                HasSubstr("no cluster Main in sqlite:store.db; the clusters there: Other\n"));
    EXPECT_FALSE(fs::exists(File("out")));
}

/// A store and a folder that differ in one document of two.
class ImportOver : public CServiceTest {
protected:
    ImportOver() {
        Put("/Cluster", ClusterText({}));
        Put("/Version", PSZ_VERSION_TEXT);
        WriteDocument("cluster.json", ClusterText({}));
        WriteDocument("version.json", PSZ_NEW_VERSION);
    }

    static constexpr char PSZ_NEW_VERSION[] = R"({"DecisionVerNum":8,"MasterVerNum":9})";
};

TEST_F(ImportOver, AnotherTextAsksFirstAndNamesIt) {
    const CProcessResult declined = RunTyping("n\n", {"import", "documents"});
    EXPECT_EQ(declined.iExitCode, 1);
    EXPECT_EQ(declined.strErrors,
              "/CloudMain/Version\n"
              "  DecisionVerNum: was 1, will be 8\n"
              "  MasterVerNum: was 2, will be 9\n"
              "cluster Main in sqlite:store.db: Replace what the store holds otherwise: "
              "/CloudMain/Version? [y/N] nothing was "
              "changed\n");
    EXPECT_THAT(Stored("/Version"), Optional(Eq(PSZ_VERSION_TEXT)));
    EXPECT_EQ(RunTyping("y\n", {"import", "documents"}).iExitCode, 0);
    EXPECT_THAT(Stored("/Version"), Optional(Eq(PSZ_NEW_VERSION)));
    EXPECT_EQ(Run({"import", "documents"}).iExitCode, 0) << "the same text asks nothing";
}

TEST_F(ImportOver, WithoutATerminalChangesNothingUnlessTold) {
    const CProcessResult refused = ImportDocuments();
    EXPECT_EQ(refused.iExitCode, 1);
    EXPECT_THAT(refused.strErrors, HasSubstr("--yes goes ahead without asking"));
    EXPECT_THAT(Stored("/Version"), Optional(Eq(PSZ_VERSION_TEXT)));
    EXPECT_EQ(Run({"import", "--yes", "documents"}).iExitCode, 0);
    EXPECT_THAT(Stored("/Version"), Optional(Eq(PSZ_NEW_VERSION)));
}

TEST_F(ImportOver, TextTooLongToBeReadIsReplacedWhenTold) {
    Put("/Version", std::string(600, ' '));
    EXPECT_EQ(ImportDocuments().iExitCode, 1);
    EXPECT_EQ(Run({"import", "-y", "documents"}).iExitCode, 0);
    EXPECT_THAT(Stored("/Version"), Optional(Eq(PSZ_NEW_VERSION)));
}

TEST_F(ImportExport, MissingFileIsToldAndItsDocumentStays) {
    Put("/Cluster", ClusterText({}));
    WriteDocument("version.json", PSZ_VERSION_TEXT);
    const CProcessResult result = ImportDocuments();
    EXPECT_EQ(result.iExitCode, 0);
    EXPECT_THAT(result.strOutput,
                HasSubstr("documents/cluster.json: no such file, /CloudMain/Cluster stays"));
    EXPECT_THAT(Stored("/Cluster"), Optional(ClusterText({})));
    EXPECT_THAT(Stored("/Version"), Optional(Eq(PSZ_VERSION_TEXT)));
}

TEST_F(ImportExport, FolderWithoutADocumentIsAnError) {
    WriteDocument("readme.txt", "nothing");
    const CProcessResult result = ImportDocuments();
    EXPECT_EQ(result.iExitCode, 2);
    EXPECT_THAT(result.strErrors, HasSubstr("documents: no document in this folder"));
}

TEST_F(ImportExport, FileThatCannotBeReadImportsNothing) {
    WriteDocument("version.json", PSZ_VERSION_TEXT);
    fs::create_directory(File("documents/cluster.json"));
    const CProcessResult result = ImportDocuments();
    EXPECT_EQ(result.iExitCode, 2);
    EXPECT_THAT(result.strErrors, HasSubstr("documents/cluster.json: cannot be read"));
    EXPECT_EQ(Stored("/Version"), std::nullopt);
}

TEST_F(ImportExport, MemoryStoreLooksAtTheFilesOnly) {
    const CProcessResult result = RunOn("memory", {"import", PSZ_SAMPLE_DIR});
    EXPECT_EQ(result.iExitCode, 0);
    EXPECT_EQ(std::distance(fs::directory_iterator(m_dir.GetPath()), fs::directory_iterator()), 0);
    EXPECT_EQ(RunOn("memory", {"export", "out"}).iExitCode, 2);
}

TEST_F(ImportExport, TextOfTheGreatestLengthFitsAndOneMoreDoesNot) {
    const std::string strText = R"({"DecisionVerNum":1,"MasterVerNum":2})";
    WriteDocument("version.json", strText + std::string(511 - strText.size(), ' '));
    EXPECT_EQ(ImportDocuments().iExitCode, 0);
    EXPECT_THAT(Stored("/Version"), Optional(SizeIs(511)));
    WriteDocument("version.json", strText + std::string(512 - strText.size(), ' '));
    const CProcessResult result = ImportDocuments();
    EXPECT_EQ(result.iExitCode, 1);
    EXPECT_THAT(result.strErrors, HasSubstr("version.json: is too long: 512 bytes, at most 511"));
    EXPECT_THAT(Stored("/Version"), Optional(SizeIs(511)));
}

TEST_F(ImportExport, WhatTheLibraryTakesIsTaken) {
    WriteDocument("cluster.json",
                  "/* the author's */ {\"ClusterName\":\"\",\"ClusterRemark\":\"\","
                  "\"ClusterCode\":\"\",\"ClusterNode\":{},\"More\":[1]}");
    WriteDocument("cg_list.json", "[]");
    const CProcessResult result = ImportDocuments();
    EXPECT_EQ(result.iExitCode, 0) << result.strErrors;
    EXPECT_THAT(Stored("/Cluster"), Optional(HasSubstr("the author's")));
}

struct CRefusal {
    const char* pszName;
    const char* pszFile;
    std::string strText;
    const char* pszReason;
};

class Refused : public CServiceTest, public ::testing::WithParamInterface<CRefusal> {};

TEST_P(Refused, WithThePlaceAndNothingIsImported) {
    WriteDocument("cluster_config.json",
                  R"({"IsLoadBalance":true,"IsFaultShift":true,"IsLoadBalanceOnePeriod":true})");
    WriteDocument("version.json", PSZ_VERSION_TEXT);
    WriteDocument(GetParam().pszFile, GetParam().strText);
    const CProcessResult result = ImportDocuments();
    EXPECT_EQ(result.iExitCode, 1);
    EXPECT_EQ(result.strErrors, std::string("documents/") + GetParam().pszFile + ": " +
                                    GetParam().pszReason + "\nnothing was imported\n");
    for (const CStoreDocument& document : StoreDocuments()) {
        EXPECT_EQ(Stored(document.node.pszSuffix), std::nullopt);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Each, Refused,
    ::testing::Values(
        CRefusal{
            "BrokenText", "cluster_config.json", "{\n  \"IsLoadBalance\" true\n}",
            "line 2, column 19: \"IsLoadBalance\" is broken: Missing ':' after object member name"},
        CRefusal{"CutText", "cluster.json", "{\"ClusterName\":\"x\"",
                 "line 1, column 19: \"ClusterName\" is broken: Missing ',' or '}' in object "
                 "declaration"},
        CRefusal{"Empty", "cluster.json", "",
                 "line 1, column 1: Syntax error: value, object or array expected."},
        CRefusal{"TextBehind", "version.json", "{\"DecisionVerNum\":1,\"MasterVerNum\":2}\nmore",
                 "line 2, column 1: Extra non-whitespace after JSON value."},
        CRefusal{"ZeroByte", "version.json", std::string(PSZ_VERSION_TEXT) + '\n' + '\0',
                 "line 2, column 1: a zero byte"},
        CRefusal{"Nested", "cluster.json", std::string(2000, '['),
                 "line 1, column 1001: nested too deeply"},
        CRefusal{"NoUtf8", "manager.json", "{\"MasterMGR\":\n{\"NodeCode\":\"\xFF\"}}",
                 "line 2, column 14: \"MasterMGR.NodeCode\" has a byte that is no UTF-8"},
        CRefusal{"ContainerTwice", "cluster.json",
                 ClusterText({NodeText("a", "10.0.0.1", {"X"}), NodeText("a", "10.0.0.2", {"X"})}),
                 "line 1, column 356: \"ClusterNode[1].Container[0].ContainerType\" is \"X\" on "
                 "node \"a\" once more: the cluster does not load"},
        CRefusal{"MissingKey", "cluster.json", R"({"ClusterName":"n","ClusterRemark":"r"})",
                 "line 1, column 1: \"ClusterCode\" is missing"},
        CRefusal{"WrongType", "cluster_config.json",
                 "{\"IsLoadBalance\":true,\n \"IsFaultShift\":1,\n "
                 "\"IsLoadBalanceOnePeriod\":true}",
                 "line 2, column 17: \"IsFaultShift\" is not true or false"},
        CRefusal{"KeyInAnArray", "cluster.json",
                 ClusterText({NodeText("a", "10.0.0.1", {}),
                              R"({"NodeID":"b","NodeIP":3,"NodeIPType":0,"NodeRole":0})"}),
                 "line 1, column 233: \"ClusterNode[1].NodeIP\" is not a string"},
        CRefusal{"ElementThatIsNoObject", "cluster.json", ClusterText({"7"}),
                 "line 1, column 99: \"ClusterNode[0]\" is no object"},
        CRefusal{"RootThatIsNoObject", "version.json", "7",
                 "line 1, column 1: the document is no object"},
        CRefusal{"ThresholdsAsArray", "cluster_config.json",
                 R"({"IsLoadBalance":true,"IsFaultShift":true,"IsLoadBalanceOnePeriod":true,)"
                 R"("LoadBalanceThreshold":[]})",
                 "line 1, column 96: \"LoadBalanceThreshold\" is not an object"},
        CRefusal{"NullSet", "cloud_storage.json", R"({"CloudStorageSet":null})",
                 "line 1, column 20: \"CloudStorageSet\" is null, not an array"},
        CRefusal{"NoSlaves", "center_db.json",
                 R"({"MasterDB":{"NodeCode":"a","NodeIp":"b","DBPort":1}})",
                 "line 1, column 1: \"SlaveDB\" is missing"},
        CRefusal{"BadOnlySlave", "center_db.json",
                 R"({"MasterDB":{"NodeCode":"a","NodeIp":"b","DBPort":1},"SlaveDB":{}})",
                 "line 1, column 64: \"SlaveDB.NodeCode\" is missing"},
        CRefusal{"ManagerWithoutAddress", "manager.json", R"({"MasterMGR":{"NodeCode":"a"}})",
                 "line 1, column 14: \"MasterMGR.NodeIp\" is missing"},
        CRefusal{"CgEntry", "cg_list.json", R"([{"NVRCode":"a"}])",
                 "line 1, column 2: \"[0].FloatCGCode\" is missing"},
        CRefusal{"NegativeVersion", "version.json", R"({"DecisionVerNum":-1,"MasterVerNum":2})",
                 "line 1, column 19: \"DecisionVerNum\" is not a version number"}),
    CaseName<CRefusal>);

TEST_F(ImportExport, EveryRefusedFileIsTold) {
    WriteDocument("cluster.json", "{}");
    WriteDocument("version.json", "{}");
    const CProcessResult result = ImportDocuments();
    EXPECT_EQ(result.iExitCode, 1);
    EXPECT_THAT(result.strErrors, HasSubstr("documents/cluster.json: "));
    EXPECT_THAT(result.strErrors, HasSubstr("documents/version.json: "));
}

struct CBadText {
    const char* pszName;
    std::string strText;
    const char* pszFault;
};

class ExportSaves : public CServiceTest, public ::testing::WithParamInterface<CBadText> {};

TEST_P(ExportSaves, ATextThatIsNoGoodDocumentByteForByte) {
    Put("/Version", GetParam().strText);
    Put("/Cluster", ClusterText({}));
    const CProcessResult result = Run({"export", "out"});
    EXPECT_EQ(result.iExitCode, 1);
    EXPECT_EQ(ReadText(File("out/version.json")), GetParam().strText);
    EXPECT_EQ(ReadText(File("out/cluster.json")), ClusterText({}));
    EXPECT_EQ(result.strErrors, std::string("/CloudMain/Version: exported as it stands, and is no "
                                            "good document: ") +
                                    GetParam().pszFault + "\n");
}

INSTANTIATE_TEST_SUITE_P(
    Each, ExportSaves,
    ::testing::Values(
        CBadText{"Broken", "{ broken", "line 1, column 3: Missing '}' or object member name"},
        CBadText{"TooLong", std::string(600, ' '), "is too long: 600 bytes, at most 511"},
        CBadText{"ZeroBytes", std::string("\0[]\0", 4), "line 1, column 1: a zero byte"}),
    CaseName<CBadText>);

TEST_F(ImportExport, AFileThatCannotBeWrittenKeepsNoOtherFromBeingExported) {
    Put("/Cluster", ClusterText({}));
    Put("/Version", PSZ_VERSION_TEXT);
    fs::create_directories(File("out/cluster.json"));
    const CProcessResult result = Run({"export", "out"});
    EXPECT_EQ(result.iExitCode, 2);
    EXPECT_THAT(result.strErrors, HasSubstr("out/cluster.json: Is a directory\n"));
    EXPECT_EQ(ReadText(File("out/version.json")), PSZ_VERSION_TEXT);
}

TEST_F(ImportExport, ExportReplacesItsFilesAndLeavesOthersAlone) {
    WriteDocument("version.json", PSZ_VERSION_TEXT);
    ASSERT_EQ(ImportDocuments().iExitCode, 0);
    WriteDocument("version.json", "old");
    WriteDocument("cluster.json", "kept");
    const CProcessResult result = Run({"export", "documents"});
    EXPECT_EQ(result.iExitCode, 0);
    EXPECT_THAT(result.strOutput, HasSubstr("/CloudMain/Cluster: not in the store"));
    EXPECT_EQ(ReadText(File("documents/version.json")), PSZ_VERSION_TEXT);
    EXPECT_EQ(ReadText(File("documents/cluster.json")), "kept");
}

TEST_F(ImportExport, ExportToAFileIsRefused) {
    Put("/Version", PSZ_VERSION_TEXT);
    m_dir.WriteFile("taken", "");
    const CProcessResult result = Run({"export", "taken"});
    EXPECT_EQ(result.iExitCode, 2);
    EXPECT_THAT(result.strErrors, HasSubstr("taken: "));
}

}  // namespace
