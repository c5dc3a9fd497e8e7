#include "framework_service/detail/copy_on_write.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(CopyOnWrite, StartsEmptyAndReadsAsSuch) {
    const CCopyOnWrite<std::string> value;
    EXPECT_EQ(*value, "");
    EXPECT_TRUE(value->empty());
}

TEST(CopyOnWrite, CopiesShareUntilOneIsEdited) {
    CCopyOnWrite<std::string> original(std::string("before"));
    const CCopyOnWrite<std::string> copy(original);
    EXPECT_EQ(&*copy, &*original);
    original.Edit() = "after";
    EXPECT_EQ(*copy, "before");
    EXPECT_EQ(*original, "after");
}

TEST(CopyOnWrite, EditOfAnUnsharedValueStaysInPlace) {
    CCopyOnWrite<std::string> value(std::string("text"));
    const std::string* const pBefore = &*value;
    value.Edit() += "s";
    EXPECT_EQ(&*value, pBefore);
    EXPECT_EQ(*value, "texts");
}

TEST(CopyOnWrite, EditAfterTheCopyWentStaysInPlace) {
    CCopyOnWrite<std::string> value(std::string("text"));
    const std::string* const pBefore = &*value;
    { const CCopyOnWrite<std::string> copy(value); }
    EXPECT_EQ(&value.Edit(), pBefore);
}

TEST(CopyOnWrite, SurvivesAssignmentToItself) {
    CCopyOnWrite<std::string> value(std::string("text"));
    const CCopyOnWrite<std::string>& self = value;
    value = self;
    EXPECT_EQ(*value, "text");
}

TEST(CopyOnWrite, IsEmptyAfterBeingMovedFromAndUsableAgain) {
    CCopyOnWrite<std::string> value(std::string("text"));
    const CCopyOnWrite<std::string> moved(std::move(value));
    EXPECT_EQ(*moved, "text");
    EXPECT_EQ(*value, "");  // NOLINT(bugprone-use-after-move)
    value.Edit() = "new";
    EXPECT_EQ(*value, "new");
}

}  // namespace
