#include <gtest/gtest.h>

#include "serve/cluster_view.h"

namespace {

ViewPointer Numbered(uint64_t ullNumber) {
    auto pView = std::make_shared<CClusterView>();
    pView->ullNumber = ullNumber;
    pView->strNotReady.clear();
    return pView;
}

}  // namespace

TEST(PublishedView, IsNotReadyBeforeTheFirst) {
    EXPECT_EQ(CPublishedView().Get()->strNotReady, "starting");
}

TEST(PublishedView, ShowsTheLastOneAndLeavesThoseBeforeToWhoHoldsThem) {
    CPublishedView published;
    published.Publish(Numbered(1));
    const ViewPointer pFirst = published.Get();
    published.Publish(Numbered(2));

    EXPECT_EQ(pFirst->ullNumber, 1U);
    EXPECT_EQ(published.Get()->ullNumber, 2U);
}

TEST(PublishedView, ShowsNothingThatIsPublishedAfterItWasClosed) {
    CPublishedView published;
    published.Publish(Numbered(1));
    published.Close("the hold is lost");
    published.Publish(Numbered(9));

    EXPECT_EQ(published.Get()->strNotReady, "the hold is lost");
    EXPECT_EQ(published.Get()->ullNumber, 2U);
}
