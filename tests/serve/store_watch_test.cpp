#include "serve/store_watch.h"

#include <gmock/gmock.h>

#include "serve/broken_store.h"
#include "serve/comes_true.h"
#include "support/host_fixture.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// A watch on a memory store whose documents are "old".
class StoreWatch : public CHostTest {
protected:
    StoreWatch() {
        m_pStore->Put(Path("/Cluster"), "old");
        m_pStore->Put(Path("/Version"), "old");
        m_watch.Look();
    }

    /// The documents of which the queue has been told since.
    std::vector<std::string> Told() {
        std::vector<std::string> names;
        for (const CInputBatch& batch : m_queue.Take(100, std::chrono::steady_clock::now())) {
            names.emplace_back(NameOf(std::get<CDocumentChanged>(batch.inputs.at(0)).eDocument));
        }
        return names;
    }

    CStoredDocument Document(const std::string& strName) { return m_texts.Get()->at(strName); }

    const std::shared_ptr<CBrokenStore> m_pBroken = std::make_shared<CBrokenStore>(m_pStore);
    CDocumentTexts m_texts;
    CInputQueue m_queue{1};
    CStoreWatch m_watch{m_pBroken, m_texts, m_queue};
};

}  // namespace

TEST_F(StoreWatch, KnowsWhatIsThereAndTellsNothingOfIt) {
    EXPECT_THAT(Told(), IsEmpty());
    EXPECT_EQ(Document("cluster").text, "old");
    EXPECT_TRUE(Document("cluster").bReadable);
    EXPECT_FALSE(Document("manager").bExists);
    m_watch.Look();
    EXPECT_THAT(Told(), IsEmpty());
}

TEST_F(StoreWatch, TellsWhatSomebodyElseWroteOnce) {
    m_pStore->Write(Path("/Version"), "new");
    m_pStore->Write(Path("/MEROMGR"), "there now");
    m_watch.Look();
    EXPECT_THAT(Told(), ElementsAre("manager", "version"));
    EXPECT_EQ(Document("version").text, "new");

    m_watch.Look();
    EXPECT_THAT(Told(), IsEmpty());
}

TEST_F(StoreWatch, TellsADocumentThatWasTakenAway) {
    m_pStore->Erase(Path("/Version"));
    m_watch.Look();

    EXPECT_THAT(Told(), ElementsAre("version"));
    EXPECT_FALSE(Document("version").bExists);
}

TEST_F(StoreWatch, TellsATextThatSomebodyElseWroteOnceMore) {
    m_pStore->Write(Path("/Cluster"), "old");
    m_watch.Look();

    EXPECT_THAT(Told(), ElementsAre("cluster"));
}

TEST_F(StoreWatch, TellsNothingOfWhatTheServiceWrote) {
    m_pStore->Write(Path("/Cluster"), "ours");
    m_texts.Wrote(Path("/Cluster"), "ours");
    EXPECT_EQ(Document("cluster").text, "ours");
    m_watch.Look();
    EXPECT_THAT(Told(), IsEmpty());

    m_pStore->Write(Path("/Cluster"), "theirs");
    m_watch.Look();
    EXPECT_THAT(Told(), ElementsAre("cluster"));
}

TEST_F(StoreWatch, LearnsNothingFromAReadThatTheServiceWroteAcross) {
    const uint64_t ullWrites = m_texts.CountWrites(EDocument::CLUSTER);
    m_texts.Wrote(Path("/Cluster"), "ours");

    EXPECT_FALSE(m_texts.Found(EDocument::CLUSTER, ullWrites, 0, {true, "old", 1}));
    EXPECT_EQ(Document("cluster").text, "ours");
}

TEST_F(StoreWatch, KeepsTheTextsOfAStoreThatIsGone) {
    m_pBroken->Break("/Cluster", 5);
    m_watch.Look();
    EXPECT_FALSE(Document("cluster").bReadable);
    EXPECT_EQ(Document("cluster").text, "old");
    EXPECT_THAT(Told(), IsEmpty());

    m_pStore->Write(Path("/Cluster"), "new");
    m_pBroken->Break("", 0);
    m_watch.Look();
    EXPECT_TRUE(Document("cluster").bReadable);
    EXPECT_THAT(Told(), ElementsAre("cluster"));
}

TEST_F(StoreWatch, LeavesTheTextsAsTheyWereToWhoHoldsThem) {
    const auto pTexts = m_texts.Get();
    m_texts.Wrote(Path("/Cluster"), "new");

    EXPECT_EQ(pTexts->at("cluster").text, "old");
}

TEST_F(StoreWatch, LooksByItself) {
    m_watch.Start();
    m_pStore->Write(Path("/Cluster"), "new");

    EXPECT_TRUE(ComesTrue([this] { return Told() == std::vector<std::string>{"cluster"}; }));
    m_watch.Stop();
}
