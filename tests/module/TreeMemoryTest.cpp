// Memory that runs out in the middle of tree and layout operations, and a stack that is small.

#include "TestLayout.h"
#include "TreeBuilding.h"
#include "private/GuardedNode.h"
#include "private/TreeAccess.h"
#include "support/Allocations.h"

#include <gtest/gtest.h>

#include <functional>
#include <iostream>
#include <memory>
#include <new>
#include <pthread.h>
#include <string>
#include <vector>

using trees::Append;
using trees::CacheOf;
using trees::LayoutRef;
using trees::MakeNode;
using trees::NodeRef;
using trees::TestLayout;

namespace {

/// Runs `work` on a stack of one mebibyte.
void RunOnSmallStack(const std::function<void()>& work)
{
    constexpr std::size_t STACK_BYTES = std::size_t{1} << 20U;
    pthread_attr_t attributes;
    ASSERT_EQ(pthread_attr_init(&attributes), 0);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, STACK_BYTES), 0);
    pthread_t thread = {};
    const auto run = [](void* argument) -> void* {
        (*static_cast<const std::function<void()>*>(argument))();
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, &attributes, run, const_cast<std::function<void()>*>(&work)),
              0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

/// A tree whose nodes have few children and whose levels are uneven; it gives back what it made
/// when memory runs out.
NodeRef MakeBushyTree(std::size_t nodes)
{
    NodeRef root = MakeNode("root");
    std::vector<VisDataTree*> made{root.Get()};
    made.reserve(nodes);
    while (made.size() < nodes)
        made.push_back(Append(made[made.size() * 5 / 7]));
    return root;
}

void PrintFailures(std::size_t failures, const char* what)
{
    std::cout << "count: " << failures << " failing allocations in " << what << "\n";
    EXPECT_GT(failures, 0U);
}

}  // namespace

TEST(TreeMemory, TreeOperationsSurviveEveryFailingAllocation)
{
    const auto scenario = [] {
        const NodeRef root = MakeNode("a label that is longer than fifteen characters");
        for (int i = 0; i < 5; ++i) {
            VisDataTree* const inner = Append(root.Get(), "inner node with a long label");
            Append(Append(inner));
            Append(inner);
        }
        const NodeRef other = MakeNode();
        other->InsertChild(root->GetChildren()[1], 0);
        EXPECT_EQ(root->ComputeNumberOfNodes(), 17U);
        EXPECT_EQ(root->ComputeNumberOfLeaves(), 8U);
        EXPECT_EQ(root->ComputeMaxDepth(), 4U);
        root->UpdateMerge(1, 1);
        const KUVUnicodeString path = root->GetFirstLeaf()->ComputeLabelUptoRoot(0);
        EXPECT_FALSE(path.IsEmpty());
        EXPECT_FALSE(root->GetLastLeaf()->ComputeLabelUptoRoot(1).IsEmpty());
    };
    PrintFailures(support::ForEveryFailingAllocation(scenario), "tree operations");
}

TEST(TreeMemory, AFailedInsertChangesNothing)
{
    const NodeRef parent = MakeNode();
    const NodeRef former = MakeNode();
    VisDataTree* const child = Append(former.Get());
    bool thrown = false;
    {
        const support::FailingAllocation failing(1);
        try {
            parent->InsertChild(child, 1);
        } catch (const std::bad_alloc&) {
            thrown = true;
        }
    }
    EXPECT_TRUE(thrown);
    EXPECT_TRUE(parent->GetChildren().empty());
    EXPECT_EQ(child->GetParent(), former.Get());
    EXPECT_EQ(child->GetReferenceCount(), 1U);
}

TEST(TreeMemory, ATreeDiesWithoutMemory)
{
    NodeRef root = MakeBushyTree(2000);
    {
        const support::FailingAllocation failing(1, support::FailingAllocation::Mode::FromThere);
        root = NodeRef();
    }
    EXPECT_FALSE(root);
}

TEST(TreeMemory, CacheOperationsSurviveEveryFailingAllocation)
{
    const auto scenario = [] {
        const NodeRef root = MakeBushyTree(40);
        struct Detach {
            std::vector<std::unique_ptr<VisDataTree::VisDataTreeCache>> caches;
            ~Detach()
            {
                for (const auto& cache : caches)
                    cache->GetNode()->SetCache(nullptr);
            }
        } all;
        VisPreOrderWalk<VisDataTree> walk(root.Get());
        while (VisDataTree* const node = walk.Next()) {
            all.caches.reserve(all.caches.size() + 1);
            all.caches.push_back(std::make_unique<VisDataTree::VisDataTreeCache>(node));
        }
        VisDataTree::VisDataTreeCache& cache = *root->GetCache();
        cache.SetColorWithValue(1);
        cache.SetResizeWithValue(1);
        cache.SetSizeValue(1234567890123);
        EXPECT_FALSE(cache.GetLabelToDisplay(VisDataTree_ApplyValueToSize).IsEmpty());
        cache.DoNotUseValue();
        const std::unique_ptr<VisDataTree::VisDataTreeCache> clone(cache.Clone());
        if (clone) {
            EXPECT_EQ(clone->GetSizeValue(), 1234567890123);
        }
    };
    PrintFailures(support::ForEveryFailingAllocation(scenario), "cache operations");
}

TEST(TreeMemory, ALayoutSurvivesEveryFailingAllocation)
{
    for (const auto mode :
         {support::FailingAllocation::Mode::Once, support::FailingAllocation::Mode::FromThere}) {
        const auto scenario = [] {
            const NodeRef root = MakeBushyTree(30);
            const auto bag = VisReference<KUV2DBagRep>::Adopt(KUV2DBagRep::CreateRep());
            const LayoutRef layout = trees::MakeLayout(root.Get(), bag.Get());
            layout->selectAfterDraw = true;
            layout->Draw({0, 0}, {100, 100}, nullptr, 1);
            layout->SetCurrentHighlightedNode(root->GetFirstLeaf());
            layout->SetCurrentRoot(root->GetChildren()[0], 1);
            layout->SetCurrentSelection(root->GetLastLeaf());
            layout->SetCurrentRoot(root->GetLastLeaf(), 1);
            layout->ReplaceLastCurrentTreeRoots(
                std::stack<VisDataTree*>(layout->GetLastCurrentTreeRoots()));
            layout->Unzoom();
            layout->EmptyStackOfLastTreeRoots();
            layout->SetTreeRoot(root->GetChildren()[0]);
            layout->SetTreeRoot(nullptr);
        };
        PrintFailures(support::ForEveryFailingAllocation(scenario, mode), "layout operations");
    }
}

TEST(TreeMemory, AfterAFailedNewTreeThereIsNoTree)
{
    for (std::size_t k = 1;; ++k) {
        const NodeRef root = MakeBushyTree(20);
        const LayoutRef layout = LayoutRef::Adopt(new TestLayout);
        bool failed = false;
        {
            const support::FailingAllocation failing(k);
            try {
                layout->SetTreeRoot(root.Get());
            } catch (const std::bad_alloc&) {
                failed = true;
            }
        }
        if (!failed)
            break;
        EXPECT_EQ(layout->GetTreeRoot(), nullptr);
        EXPECT_EQ(layout->GetCurrentRoot(), nullptr);
        EXPECT_EQ(root->GetReferenceCount(), 1U);
        EXPECT_EQ(root->GetCache(), nullptr);
        EXPECT_EQ(root->GetLastLeaf()->GetCache(), nullptr);
        layout->SetTreeRoot(root.Get());
        EXPECT_NE(root->GetLastLeaf()->GetCache(), nullptr) << "the layout is as usable as before";
    }
}

TEST(TreeMemory, AResetThatIsCutOffHidesTheRestNextTime)
{
    const auto bag = VisReference<KUV2DBagRep>::Adopt(KUV2DBagRep::CreateRep());
    for (std::size_t k = 1;; ++k) {
        const NodeRef root = MakeBushyTree(60);
        const LayoutRef layout = trees::MakeLayout(root.Get(), bag.Get());
        layout->Draw({0, 0}, {1, 1}, nullptr, 1);
        bool failed = false;
        {
            const support::FailingAllocation failing(k);
            try {
                layout->ResetView(CacheOf(root.Get()));
            } catch (const std::bad_alloc&) {
                failed = true;
            }
        }
        layout->ResetView(CacheOf(root.Get()));
        EXPECT_EQ(bag->GetChildren()->Count(), 0);
        if (!failed)
            break;
    }
}

TEST(TreeMemory, AThousandLevelsPassOnAStackOfOneMebibyte)
{
    RunOnSmallStack([] {
        VisDataTree* last = nullptr;
        const NodeRef root = trees::MakeChain(1000, &last);
        Append(root->GetChildren()[0]);
        const LayoutRef layout = trees::MakeLayout(root.Get());
        EXPECT_EQ(root->ComputeMaxDepth(), 1000U);
        EXPECT_EQ(root->ComputeNumberOfLeaves(), 2U);
        EXPECT_EQ(root->ComputeNumberOfNodes(), 1001U);
        root->UpdateMerge(1, 1);
        root->GetCache()->SetColorWithValue(1);
        root->GetCache()->DoNotUseValue();
        layout->Draw({0, 0}, {1, 1}, nullptr, 1);
        layout->SetCurrentRoot(last, 1);
        layout->Unzoom();
    });
}

// ---- guarded pointers

TEST(GuardedNode, EmptiesWhenItsNodeDies)
{
    NodeRef node = MakeNode();
    const VisGuardedNode guard(node.Get());
    VisGuardedNode other;
    other.Set(node.Get());
    EXPECT_EQ(VisTreeAccess::Watched(*node.Get()), 2);
    EXPECT_EQ(node->GetReferenceCount(), 1U) << "a guard holds no reference";
    node = NodeRef();
    EXPECT_EQ(guard.Get(), nullptr);
    EXPECT_EQ(other.Get(), nullptr);
}

TEST(GuardedNode, StopsWatchingANodeThatItLeaves)
{
    const NodeRef node = MakeNode();
    const NodeRef next = MakeNode();
    {
        VisGuardedNode guard(node.Get());
        guard.Set(node.Get());
        EXPECT_EQ(VisTreeAccess::Watched(*node.Get()), 1);
        guard.Set(next.Get());
        EXPECT_EQ(VisTreeAccess::Watched(*node.Get()), 0);
        EXPECT_EQ(VisTreeAccess::Watched(*next.Get()), 1);
    }
    EXPECT_EQ(VisTreeAccess::Watched(*next.Get()), 0);
}

TEST(GuardedNode, MoreGuardsThanCanBeCountedEmptyAllTheSame)
{
    NodeRef node = MakeNode();
    const VisGuardedNode first(node.Get());
    {
        std::vector<std::unique_ptr<VisGuardedNode>> guards;
        guards.reserve(300);
        for (int i = 0; i < 300; ++i)
            guards.push_back(std::make_unique<VisGuardedNode>(node.Get()));
    }
    EXPECT_EQ(first.Get(), node.Get());
    node = NodeRef();
    EXPECT_EQ(first.Get(), nullptr);
}

TEST(GuardedNode, AStackEmptiesTheEntriesOfANodeThatDies)
{
    NodeRef one = MakeNode();
    const NodeRef other = MakeNode();
    VisGuardedNodeStack stack;
    for (VisDataTree* const node : {one.Get(), other.Get(), one.Get()})
        stack.Push(node);
    EXPECT_EQ(VisTreeAccess::Watched(*one.Get()), 1);
    one = NodeRef();
    EXPECT_EQ(stack.Get().size(), 3U) << "entries keep their places";
    EXPECT_EQ(stack.Pop(), nullptr);
    EXPECT_EQ(stack.Pop(), other.Get());
    EXPECT_EQ(VisTreeAccess::Watched(*other.Get()), 0);
    EXPECT_EQ(stack.Pop(), nullptr);
    EXPECT_EQ(stack.Pop(), nullptr);
    EXPECT_TRUE(stack.Get().empty());
}

TEST(GuardedNode, ANewNodeAtTheSameAddressDoesNotComeBack)
{
    VisGuardedNodeStack stack;
    for (int i = 0; i < 100; ++i) {
        const NodeRef node = MakeNode();
        stack.Push(node.Get());
    }
    const NodeRef node = MakeNode();
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(stack.Pop(), nullptr);
}
