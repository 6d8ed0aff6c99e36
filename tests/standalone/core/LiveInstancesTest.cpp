#include "support/LiveInstances.h"
#include "support/Allocations.h"

#include "KUV2D.h"
#include "KUVCommand.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include <memory>
#include <new>

namespace {

struct Watchable {
    virtual ~Watchable() = default;
    int value = 0;
};

struct WatchableChild : Watchable {};

const support::WatchedClass WATCH("Watchable", [] {
    const Watchable sample;
    return support::VirtualTableOf(sample);
});

}  // namespace

TEST(LiveInstances, AnObjectOfTheHostIsInTheTableWhileItLives)
{
    KUV2DBagRep* const bag = KUV2DBagRep::CreateRep();
    EXPECT_EQ(support::DescribeLiveInstances(), "1 KUV2DBagRep\n");
    bag->Release();
    EXPECT_EQ(support::DescribeLiveInstances(), "");
}

TEST(LiveInstances, AWatchedClassIsInTheTableByItsOwnNameOnly)
{
    const auto watched = std::make_unique<Watchable>();
    const auto child = std::make_unique<WatchableChild>();
    EXPECT_EQ(support::DescribeLiveInstances(), "1 Watchable\n");
}

TEST(LiveInstances, AnObjectOnTheStackLeavesNothing)
{
    {
        const KUVNotification notification;
        EXPECT_EQ(support::DescribeLiveInstances(), "1 KUVNotification\n");
    }
    EXPECT_EQ(support::DescribeLiveInstances(), "");
}

// The operators are called by name here: a compiler may leave out a new-expression whose memory it
// can do without.

TEST(Allocations, TheFailingAllocationIsTheOneCounted)
{
    void* blocks[3] = {};
    {
        const support::FailingAllocation failing(2);
        for (void*& block : blocks)
            block = ::operator new(8, std::nothrow);
        EXPECT_TRUE(failing.HasFailed());
    }
    EXPECT_NE(blocks[0], nullptr);
    EXPECT_EQ(blocks[1], nullptr);
    EXPECT_NE(blocks[2], nullptr);
    for (void* const block : blocks)
        ::operator delete(block);
}

TEST(Allocations, AFailingAllocationThrowsUnlessItMayNot)
{
    bool thrown = false;
    {
        const support::FailingAllocation failing(1);
        try {
            ::operator delete(::operator new(8));
        } catch (const std::bad_alloc&) {
            thrown = true;
        }
    }
    EXPECT_TRUE(thrown);
}

TEST(Allocations, EveryAllocationFromThereOnFails)
{
    int failures = 0;
    {
        const support::FailingAllocation failing(2, support::FailingAllocation::Mode::FromThere);
        for (int i = 0; i < 4; ++i) {
            void* const block = ::operator new(8, std::nothrow);
            failures += block ? 0 : 1;
            ::operator delete(block);
        }
    }
    EXPECT_EQ(failures, 3);
}

TEST(Allocations, PixelBuffersFailLikeOtherMemory)
{
    const support::FailingAllocation failing(1);
    EXPECT_EQ(KUVAllocatePixels(4), nullptr);
    unsigned char* const pixels = KUVAllocatePixels(4);
    EXPECT_NE(pixels, nullptr);
    KUVFreePixels(pixels);
}

TEST(Allocations, AScopeCountsWhatWasNotFreed)
{
    const support::AllocationScope scope;
    void* const kept = ::operator new(100);
    ::operator delete(::operator new(8));
    EXPECT_EQ(scope.CountLive(), 1U);
    EXPECT_EQ(scope.SumLiveBytes(), 100U);
    ::operator delete(kept);
}

TEST(Allocations, EveryAllocationOfAScenarioFailsOnce)
{
    int completed = 0;
    const std::size_t failures = support::ForEveryFailingAllocation([&completed] {
        for (int i = 0; i < 3; ++i)
            ::operator delete(::operator new(8));
        ++completed;
    });
    EXPECT_EQ(failures, 3U);
    EXPECT_EQ(completed, 2) << "once before the first failure, once after the last";
}

TEST(Allocations, WhatAFailedScenarioLeavesBehindIsReported)
{
    static void* lost = nullptr;
    EXPECT_NONFATAL_FAILURE(support::ForEveryFailingAllocation(
                                [] {
                                    lost = ::operator new(8);
                                    ::operator delete(::operator new(8));
                                    ::operator delete(lost);
                                },
                                support::FailingAllocation::Mode::Once, 2),
                            "allocations left over when allocation 2 failed");
    ::operator delete(lost);
}
