#include "support/Allocations.h"

#include "KUV2D.h"
#include "KUVRep.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

namespace {

/// Reps that are released with the holder.
class SomeReps {
public:
    explicit SomeReps(int count)
    {
        for (int i = 0; i < count; ++i)
            reps_.push_back(KUV2DBagRep::CreateRep());
    }
    SomeReps(const SomeReps&) = delete;
    SomeReps& operator=(const SomeReps&) = delete;
    ~SomeReps()
    {
        for (KUVRep* const rep : reps_)
            rep->Release();
    }
    KUVRep* operator[](int index) const { return reps_[static_cast<std::size_t>(index)]; }

private:
    std::vector<KUVRep*> reps_;
};

std::vector<const KUVRep*> ContentOf(const KUVChildReps& children)
{
    std::vector<const KUVRep*> content;
    const list<KUVRep>& entries = children.GetList();
    for (int i = 0; i < entries.Count(); ++i)
        content.push_back(entries[i]);
    return content;
}

}  // namespace

TEST(KUVChildReps, IsEmptyAtFirstAndCostsAPointer)
{
    const KUVChildReps children;
    EXPECT_EQ(children.GetList().Count(), 0);
    EXPECT_EQ(children.Has(nullptr), 0);
    EXPECT_EQ(sizeof(KUVChildReps), sizeof(void*));
}

TEST(KUVChildReps, KeepsTheOrderInWhichChildrenWereAdded)
{
    const SomeReps reps(3);
    KUVChildReps children;
    for (int i = 0; i < 3; ++i)
        children.Add(reps[i]);
    EXPECT_EQ(ContentOf(children), (std::vector<const KUVRep*>{reps[0], reps[1], reps[2]}));
}

TEST(KUVChildReps, HoldsOneReferenceOnEachChild)
{
    const SomeReps reps(2);
    {
        KUVChildReps children;
        children.Add(reps[0]);
        children.Add(reps[1]);
        EXPECT_EQ(reps[0]->GetReferenceCount(), 2U);
        children.Remove(reps[0]);
        EXPECT_EQ(reps[0]->GetReferenceCount(), 1U);
        EXPECT_EQ(reps[1]->GetReferenceCount(), 2U);
    }
    EXPECT_EQ(reps[1]->GetReferenceCount(), 1U);
}

TEST(KUVChildReps, ARepThatIsAChildAlreadyStaysWhereItIs)
{
    const SomeReps reps(2);
    KUVChildReps children;
    children.Add(reps[0]);
    children.Add(reps[1]);
    children.Add(reps[0]);
    EXPECT_EQ(ContentOf(children), (std::vector<const KUVRep*>{reps[0], reps[1]}));
    EXPECT_EQ(reps[0]->GetReferenceCount(), 2U);
}

TEST(KUVChildReps, NullAndStrangersAreHarmless)
{
    const SomeReps reps(2);
    KUVChildReps children;
    children.Add(nullptr);
    children.Remove(nullptr);
    children.Remove(reps[1]);
    children.Add(reps[0]);
    children.Remove(reps[1]);
    EXPECT_EQ(ContentOf(children), std::vector<const KUVRep*>{reps[0]});
    EXPECT_EQ(children.Has(reps[1]), 0);
    EXPECT_EQ(reps[1]->GetReferenceCount(), 1U);
}

TEST(KUVChildReps, ChildrenKeepTheirOrderWhenOneIsRemoved)
{
    for (const int count : {5, 15, 16, 17, 18, 100}) {
        const SomeReps reps(count);
        KUVChildReps children;
        std::vector<const KUVRep*> expected;
        for (int i = 0; i < count; ++i) {
            children.Add(reps[i]);
            if (i % 3 != 1)
                expected.push_back(reps[i]);
        }
        for (int i = 1; i < count; i += 3)
            children.Remove(reps[i]);
        EXPECT_EQ(ContentOf(children), expected) << count;
        EXPECT_EQ(children.Has(reps[0]), 1);
        EXPECT_EQ(children.Has(reps[1]), 0);
    }
}

TEST(KUVChildReps, ARemovedChildComesBackAtTheEnd)
{
    const SomeReps reps(20);
    KUVChildReps children;
    for (int i = 0; i < 20; ++i)
        children.Add(reps[i]);
    children.Remove(reps[0]);
    children.Add(reps[0]);
    EXPECT_EQ(ContentOf(children).front(), reps[1]);
    EXPECT_EQ(ContentOf(children).back(), reps[0]);
}

TEST(KUVChildReps, AChildMayBeRemovedAndAddedForEverWithoutGrowing)
{
    for (const int count : {3, 40}) {
        const SomeReps reps(count);
        KUVChildReps children;
        for (int i = 0; i < count; ++i)
            children.Add(reps[i]);
        const support::AllocationScope scope;
        for (int i = 0; i < 10000; ++i) {
            children.Remove(reps[i % count]);
            children.Add(reps[i % count]);
        }
        EXPECT_LE(scope.SumLiveBytes(), static_cast<std::size_t>(count) * 100U + 512U) << count;
        EXPECT_EQ(children.GetList().Count(), count);
    }
}

RC_GTEST_PROP(KUVChildReps, BehavesLikeAPlainListOfChildren,
              (const std::vector<std::pair<bool, unsigned char>>& steps))
{
    constexpr int COUNT = 48;
    const SomeReps reps(COUNT);
    KUVChildReps children;
    std::vector<const KUVRep*> expected;
    // Begins large, so that removals meet the table of places as well.
    for (int i = 0; i < COUNT / 2; ++i) {
        children.Add(reps[i]);
        expected.push_back(reps[i]);
    }
    for (std::size_t i = 0; i < steps.size(); ++i) {
        KUVRep* const rep = reps[steps[i].second % COUNT];
        const auto found = std::find(expected.begin(), expected.end(), rep);
        RC_ASSERT((children.Has(rep) != 0) == (found != expected.end()));
        if (!steps[i].first) {
            children.Remove(rep);
            if (found != expected.end())
                expected.erase(found);
        } else {
            children.Add(rep);
            if (found == expected.end())
                expected.push_back(rep);
        }
        // Reading closes gaps: not after every step.
        if (i % 5 == 0)
            RC_ASSERT(ContentOf(children) == expected);
    }
    RC_ASSERT(ContentOf(children) == expected);
}

TEST(KUVChildReps, WithoutMemoryAddingChangesNothing)
{
    const SomeReps reps(40);
    const std::size_t failures = support::ForEveryFailingAllocation([&reps] {
        KUVChildReps children;
        for (int i = 0; i < 40; ++i) {
            try {
                children.Add(reps[i]);
            } catch (const std::bad_alloc&) {
                const support::UncountedAllocations uncounted;
                EXPECT_EQ(children.GetList().Count(), i);
                EXPECT_EQ(children.Has(reps[i]), 0);
                EXPECT_EQ(reps[i]->GetReferenceCount(), 1U);
                throw;
            }
        }
    });
    EXPECT_GT(failures, 3U);
    for (int i = 0; i < 40; ++i)
        EXPECT_EQ(reps[i]->GetReferenceCount(), 1U);
}

TEST(KUVChildReps, AChainOfAMillionBagsDiesWithoutRecursion)
{
    KUV2DBagRep* const top = KUV2DBagRep::CreateRep();
    KUV2DBagRep* last = top;
    for (int level = 0; level < 1000000; ++level) {
        KUV2DBagRep* const next = KUV2DBagRep::CreateRep();
        last->AddChild(next);
        next->Release();
        last = next;
    }
    top->Release();
}

TEST(KUVChildReps, ChildrenDieInTheirOrder)
{
    class Noting : public KUVRep {
    public:
        Noting(std::vector<int>& log, int number) : log_(log), number_(number) {}
        ~Noting() override { log_.push_back(number_); }

    private:
        std::vector<int>& log_;
        int number_;
    };
    std::vector<int> log;
    KUV2DBagRep* const bag = KUV2DBagRep::CreateRep();
    for (int i = 0; i < 4; ++i) {
        KUVRep* const rep = new Noting(log, i);
        bag->AddChild(rep);
        rep->Release();
    }
    bag->Release();
    EXPECT_EQ(log, (std::vector<int>{0, 1, 2, 3}));
}
