#include "Vorn/OwnerPtr.h"

#include <gtest/gtest.h>

namespace {

using vorn::MakeOwner;
using vorn::OwnerPtr;

struct Base {
    virtual ~Base() = default;
    virtual int Value() const = 0;
};

struct Second {
    virtual ~Second() = default;
    int filler = 7;
};

/// Counts how often it is released; `Base` is not its first base, so that a pointer changes on conversion.
struct Counted final : Second, Base {
    Counted(int& released, int value) : m_released(released), m_value(value) {}
    ~Counted() override { ++m_released; }
    int Value() const override { return m_value; }
    int& m_released;
    int m_value;
};

TEST(OwnerPtr, ReleasesItsObjectOnce) {
    int released = 0;
    {
        const auto owner = MakeOwner<Counted>(released, 5);
        EXPECT_EQ(owner->Value(), 5);
        EXPECT_EQ((*owner).Value(), 5);
        EXPECT_TRUE(owner);
    }
    EXPECT_EQ(released, 1);
}

TEST(OwnerPtr, AMovedFromOwnerIsEmpty) {
    int released = 0;
    auto first = MakeOwner<Counted>(released, 5);
    const OwnerPtr<Counted> second = std::move(first);
    EXPECT_TRUE(first == nullptr); // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(second->Value(), 5);
    EXPECT_EQ(released, 0);
}

TEST(OwnerPtr, AConvertedOwnerReleasesTheObjectAsWhatItWasMade) {
    int released = 0;
    {
        const OwnerPtr<Base> base = MakeOwner<Counted>(released, 6);
        EXPECT_EQ(base->Value(), 6);
    }
    EXPECT_EQ(released, 1);
}

TEST(OwnerPtr, AssignmentReleasesWhatWasOwnedBefore) {
    int released = 0;
    auto owner = MakeOwner<Counted>(released, 1);
    owner = MakeOwner<Counted>(released, 2);
    EXPECT_EQ(released, 1);
    EXPECT_EQ(owner->Value(), 2);
    owner = nullptr;
    EXPECT_EQ(released, 2);
    EXPECT_EQ(owner.get(), nullptr);
}

TEST(OwnerPtr, MovingAnOwnerIntoItselfChangesNothing) {
    int released = 0;
    auto owner = MakeOwner<Counted>(released, 3);
    auto& same = owner;
    owner = std::move(same);
    EXPECT_EQ(owner->Value(), 3);
    EXPECT_EQ(released, 0);
}

TEST(OwnerPtr, ResetReleasesAtOnceAndTwiceIsOnce) {
    int released = 0;
    auto owner = MakeOwner<Counted>(released, 3);
    owner.reset();
    owner.reset();
    EXPECT_EQ(released, 1);
}

TEST(OwnerPtr, SwapExchangesObjects) {
    int released = 0;
    auto first = MakeOwner<Counted>(released, 1);
    auto second = MakeOwner<Counted>(released, 2);
    first.swap(second);
    EXPECT_EQ(first->Value(), 2);
    EXPECT_EQ(second->Value(), 1);
}

TEST(OwnerPtr, TheDeleterOfTheMakerIsUsed) {
    static int calls = 0;
    calls = 0;
    static int object = 9;
    {
        const OwnerPtr<int> owner(&object, [](void* p) { calls += p == &object ? 1 : 100; });
        EXPECT_EQ(*owner, 9);
    }
    EXPECT_EQ(calls, 1);
}

TEST(OwnerPtr, ANullPointerGivesAnEmptyOwner) {
    const OwnerPtr<int> owner(static_cast<int*>(nullptr));
    EXPECT_FALSE(owner);
}

} // namespace
