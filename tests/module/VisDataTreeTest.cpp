#include "VisDataTree.h"

#include "TreeBuilding.h"
#include "VirtualSlots.h"
#include "private/TreeAccess.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using trees::Append;
using trees::AppendRecording;
using trees::MakeChain;
using trees::MakeNode;
using trees::NodeRef;

namespace {

std::string Text(const KUVUnicodeString& text) { return text.GetUtf8(); }

const VisDataTree& AsConst(const VisDataTree* node) { return *node; }

/// Counts how often it is reset.
class CountingCache : public VisDataTree::VisDataTreeCache {
public:
    using VisDataTreeCache::VisDataTreeCache;
    int resets = 0;

protected:
    void InternalResetCache() override { ++resets; }
};

//      R
//    / | \.
//   A  B  C
//  / \     \.
// D   E     F
struct SmallTree {
    NodeRef r = MakeNode("R");
    VisDataTree* a = Append(r.Get(), "A");
    VisDataTree* b = Append(r.Get(), "B");
    VisDataTree* c = Append(r.Get(), "C");
    VisDataTree* d = Append(a, "D");
    VisDataTree* e = Append(a, "E");
    VisDataTree* f = Append(c, "F");
};

}  // namespace

// ---- construction and accessors

TEST(VisDataTree, ANewNodeHoldsItsArgumentsAndNothingElse)
{
    int thing = 0;
    const NodeRef node = NodeRef::Adopt(new VisDataTree(&thing, "label", "icon"));

    EXPECT_EQ(node->GetReferenceCount(), 1U);
    EXPECT_EQ(node->GetData(), &thing);
    EXPECT_EQ(Text(node->GetLabel()), "label");
    EXPECT_EQ(Text(node->GetIconName()), "icon");
    EXPECT_EQ(node->IsMergeable(), 0);
    EXPECT_EQ(node->IsMerged(), 0);
    EXPECT_EQ(node->IsLeafObject(), 0);
    EXPECT_TRUE(node->GetChildren().empty());
    EXPECT_EQ(node->GetParent(), nullptr);
    EXPECT_EQ(AsConst(node.Get()).GetParent(), nullptr);
    EXPECT_EQ(node->GetCache(), nullptr);
}

TEST(VisDataTree, TheSettersStoreWhatTheyAreGiven)
{
    const NodeRef node = MakeNode();
    int thing = 0;
    node->SetData(&thing);
    node->SetLabel("other");
    node->SetIconName("image");
    node->SetIsLeafObject(7);
    node->SetIsMergeable(2);
    node->SetIsMerged(255);

    EXPECT_EQ(node->GetData(), &thing);
    EXPECT_EQ(Text(node->GetLabel()), "other");
    EXPECT_EQ(Text(node->GetIconName()), "image");
    EXPECT_EQ(node->IsLeafObject(), 7) << "flags keep the byte they were given";
    EXPECT_EQ(node->IsMergeable(), 2);
    EXPECT_EQ(node->IsMerged(), 255);
}

TEST(VisDataTree, AnswersForItsClassByName)
{
    const NodeRef node = MakeNode();
    EXPECT_STREQ(VisDataTree::ClassName(), "VisDataTree");
    EXPECT_STREQ(node->IsA(), "VisDataTree");
    EXPECT_EQ(node->IsAKindOf("VisDataTree"), 1);
    EXPECT_EQ(node->IsAKindOf("KUVBaseUnknown"), 1);
    EXPECT_EQ(node->IsAKindOf("KUVCommand"), 0);
    EXPECT_EQ(node->IsAKindOf(nullptr), 0);
    EXPECT_EQ(VisDataTree::CreateItself(), nullptr) << "nothing is created by name";

    const KUVMetaClass* const meta = VisDataTree::MetaObject();
    ASSERT_NE(meta, nullptr);
    EXPECT_EQ(node->GetMetaObject(), meta);
    EXPECT_EQ(meta->GetBase(), KUVBaseUnknown::MetaObject());
    EXPECT_STREQ(meta->GetFramework(), "VisualizationCommands");
    EXPECT_EQ(meta->GetInstanceSize(), sizeof(VisDataTree));
    EXPECT_TRUE(VisDataTree::ClassId() == meta->GetClassId());
}

TEST(VisDataTree, KeepsTheSlotOrderOfItsBaseAndAddsNone)
{
    using QueryById = KUVResult (VisDataTree::*)(KUVClassId, void**);
    using QueryByName = KUVResult (VisDataTree::*)(const char*, void**);
    EXPECT_EQ(SlotOf(static_cast<QueryById>(&VisDataTree::QueryInterface)), 0);
    EXPECT_EQ(SlotOf(&VisDataTree::AddRef), 1);
    EXPECT_EQ(SlotOf(&VisDataTree::Release), 2);
    EXPECT_EQ(SlotOf(&VisDataTree::GetTypeInfoCount), 3);
    EXPECT_EQ(SlotOf(&VisDataTree::GetTypeInfo), 4);
    EXPECT_EQ(SlotOf(&VisDataTree::GetIDsOfNames), 5);
    EXPECT_EQ(SlotOf(&VisDataTree::Invoke), 6);
    EXPECT_EQ(SlotOf(static_cast<QueryByName>(&VisDataTree::QueryInterface)), 7);
    // The destructor takes two: one that destroys, one that frees as well.
    EXPECT_EQ(SlotOf(&VisDataTree::GetMetaObject), 10);
    EXPECT_EQ(SlotOf(&VisDataTree::IsA), 11);
    EXPECT_EQ(SlotOf(&VisDataTree::IsAKindOf), 12);
    EXPECT_EQ(SlotOf(&VisDataTree::GetImpl), 13);
    EXPECT_EQ(SlotOf(&VisDataTree::IsNull), 14);
    EXPECT_EQ(SlotOf(&VisDataTree::IsEqual), 15);
    EXPECT_EQ(SlotOf(&VisDataTree::ChangeComponentState), 16);

    struct Next : VisDataTree {
        using VisDataTree::VisDataTree;
        virtual void FirstOfItsOwn() {}
    };
    EXPECT_EQ(SlotOf(&Next::FirstOfItsOwn), 17) << "the class adds no virtual operation";
}

// ---- InsertChild

TEST(VisDataTree, InsertingNullDoesNothing)
{
    const NodeRef node = MakeNode();
    EXPECT_EQ(node->ComputeMaxDepth(), 1U);
    node->InsertChild(nullptr, 1);
    node->InsertChild(nullptr, 0);
    EXPECT_TRUE(node->GetChildren().empty());
    EXPECT_EQ(node->ComputeMaxDepth(), 1U);
}

TEST(VisDataTree, InsertingAppendsAndTakesAReference)
{
    const NodeRef parent = MakeNode();
    const NodeRef first = MakeNode();
    const NodeRef second = MakeNode();
    parent->InsertChild(first.Get(), 1);
    parent->InsertChild(second.Get(), 1);

    EXPECT_EQ(parent->GetChildren(), (std::vector<VisDataTree*>{first.Get(), second.Get()}));
    EXPECT_EQ(first->GetParent(), parent.Get());
    EXPECT_EQ(first->GetReferenceCount(), 2U);
    EXPECT_EQ(parent->GetReferenceCount(), 1U) << "the parent link holds no reference";
}

TEST(VisDataTree, InsertingAChildOfAnotherParentMovesItAndReleasesTheOldReferenceOnce)
{
    const NodeRef former = MakeNode();
    const NodeRef parent = MakeNode();
    const NodeRef child = MakeNode();
    former->InsertChild(child.Get(), 1);
    ASSERT_EQ(child->GetReferenceCount(), 2U);

    parent->InsertChild(child.Get(), 1);

    EXPECT_TRUE(former->GetChildren().empty());
    EXPECT_EQ(parent->GetChildren().size(), 1U);
    EXPECT_EQ(child->GetParent(), parent.Get());
    EXPECT_EQ(child->GetReferenceCount(), 2U) << "one of ours, one of the new parent's";
}

TEST(VisDataTree, InsertingAChildAgainMovesItToTheEnd)
{
    SmallTree t;
    t.r->InsertChild(t.a, 1);
    EXPECT_EQ(t.r->GetChildren(), (std::vector<VisDataTree*>{t.b, t.c, t.a}));
    EXPECT_EQ(t.a->GetReferenceCount(), 1U);
}

TEST(VisDataTree, MovingANodeToItsGrandparentIsLegal)
{
    SmallTree t;
    t.r->InsertChild(t.d, 1);
    EXPECT_EQ(t.r->GetChildren().back(), t.d);
    EXPECT_EQ(t.a->GetChildren(), (std::vector<VisDataTree*>{t.e}));
}

TEST(VisDataTree, InsertingANodeBelowItselfOrItsOwnDescendantDoesNothing)
{
    SmallTree t;
    t.d->InsertChild(t.d, 1);
    t.d->InsertChild(t.a, 1);
    t.d->InsertChild(t.r.Get(), 1);
    EXPECT_TRUE(t.d->GetChildren().empty());
    EXPECT_EQ(t.a->GetParent(), t.r.Get());
    EXPECT_EQ(t.r->GetParent(), nullptr);
    EXPECT_EQ(t.r->GetReferenceCount(), 1U);
    EXPECT_EQ(t.r->ComputeNumberOfNodes(), 7U);
}

TEST(VisDataTree, InsertingWithoutResetLeavesTheAncestorsCountsStale)
{
    const NodeRef root = MakeNode();
    VisDataTree* const inner = Append(root.Get());
    Append(inner);
    ASSERT_EQ(root->ComputeNumberOfLeaves(), 1U);
    ASSERT_EQ(root->ComputeMaxDepth(), 3U);

    const NodeRef late = MakeNode();
    inner->InsertChild(late.Get(), /*resetCaches=*/0);
    EXPECT_EQ(root->ComputeNumberOfLeaves(), 1U) << "the remembered count is left stale on purpose";
    EXPECT_EQ(root->ComputeNumberOfNodes(), 4U) << "this count is never remembered";

    VisTreeAccess::ResetCache(*inner);
    EXPECT_EQ(root->ComputeNumberOfLeaves(), 2U);
}

TEST(VisDataTree, RemovingAnyChildEndsStaleCounts)
{
    const NodeRef root = MakeNode();
    VisDataTree* const inner = Append(root.Get());
    VisDataTree* const leaf = Append(inner);
    ASSERT_EQ(root->ComputeNumberOfLeaves(), 1U);
    const NodeRef late = MakeNode();
    const NodeRef later = MakeNode();
    inner->InsertChild(late.Get(), 0);
    inner->InsertChild(later.Get(), 0);
    ASSERT_EQ(root->ComputeNumberOfLeaves(), 1U);

    leaf->RemoveParent(1);
    EXPECT_EQ(root->ComputeNumberOfLeaves(), 2U);
}

TEST(VisDataTree, StaleCountsAboveAreResetByALaterInsertFarBelow)
{
    // The walk towards the root may stop early only where nothing is left to reset: here the
    // nodes below the stale root were already found quiet before they were hung under it.
    const NodeRef root = MakeNode();
    ASSERT_EQ(root->ComputeMaxDepth(), 1U);
    ASSERT_EQ(root->ComputeNumberOfLeaves(), 1U);
    const NodeRef sub = MakeNode();
    VisDataTree* const middle = Append(sub.Get());
    VisDataTree* const low = Append(middle);
    root->InsertChild(sub.Get(), /*resetCaches=*/0);
    ASSERT_EQ(root->ComputeMaxDepth(), 1U) << "stale";

    Append(low);
    EXPECT_EQ(root->ComputeMaxDepth(), 5U);
    Append(low);
    EXPECT_EQ(root->ComputeNumberOfLeaves(), 2U);
}

TEST(VisDataTree, ACountRememberedBetweenTwoInsertsIsForgottenAgain)
{
    const NodeRef root = MakeNode();
    VisDataTree* const inner = Append(root.Get());
    for (unsigned int leaves = 1; leaves < 5; ++leaves) {
        Append(inner);
        EXPECT_EQ(root->ComputeNumberOfLeaves(), leaves);
        EXPECT_EQ(inner->ComputeMaxDepth(), 2U);
    }
    Append(inner->GetChildren().front());
    EXPECT_EQ(root->ComputeMaxDepth(), 4U);
}

TEST(VisDataTree, InsertingResetsTheCachesOfTheNodeAndAllAncestorsOnceEach)
{
    SmallTree t;
    CountingCache ofRoot(t.r.Get());
    CountingCache ofA(t.a);
    CountingCache ofB(t.b);
    ofRoot.resets = ofA.resets = ofB.resets = 0;

    Append(t.d);
    EXPECT_EQ(ofA.resets, 1) << "a node without cache on the way does not end the walk";
    EXPECT_EQ(ofRoot.resets, 1);
    EXPECT_EQ(ofB.resets, 0);
    Append(t.d);
    EXPECT_EQ(ofRoot.resets, 2);

    const NodeRef late = MakeNode();
    t.d->InsertChild(late.Get(), 0);
    EXPECT_EQ(ofRoot.resets, 2);

    t.a->SetCache(nullptr);
    t.b->SetCache(nullptr);
    t.r->SetCache(nullptr);
}

// ---- RemoveParent

TEST(VisDataTree, RemovingARootDoesNothing)
{
    const NodeRef node = MakeNode();
    node->RemoveParent(1);
    EXPECT_EQ(node->GetReferenceCount(), 1U);
}

TEST(VisDataTree, RemovingGivesTheParentsReferenceBackOrPassesItToTheCaller)
{
    const NodeRef parent = MakeNode();
    const NodeRef child = MakeNode();
    parent->InsertChild(child.Get(), 1);
    child->RemoveParent(/*release=*/1);
    EXPECT_EQ(child->GetReferenceCount(), 1U);
    EXPECT_EQ(child->GetParent(), nullptr);

    parent->InsertChild(child.Get(), 1);
    child->RemoveParent(/*release=*/0);
    EXPECT_EQ(child->GetReferenceCount(), 2U);
    EXPECT_TRUE(parent->GetChildren().empty());
    child->Release();
}

TEST(VisDataTree, RemovingShiftsLaterSiblingsAndKeepsTheirOrder)
{
    SmallTree t;
    t.a->RemoveParent(1);
    EXPECT_EQ(t.r->GetChildren(), (std::vector<VisDataTree*>{t.b, t.c}));
}

TEST(VisDataTree, RemovingResetsTheFormerAncestors)
{
    SmallTree t;
    ASSERT_EQ(t.r->ComputeNumberOfLeaves(), 4U);
    ASSERT_EQ(t.r->ComputeMaxDepth(), 3U);
    CountingCache ofRoot(t.r.Get());
    ofRoot.resets = 0;
    t.a->RemoveParent(1);
    EXPECT_EQ(ofRoot.resets, 1);
    EXPECT_EQ(t.r->ComputeNumberOfLeaves(), 2U);
    t.f->RemoveParent(1);
    EXPECT_EQ(t.r->ComputeMaxDepth(), 2U);
    t.r->SetCache(nullptr);
}

TEST(VisDataTree, RemovingANodeThatItsParentDoesNotListOnlyClearsTheLink)
{
    const NodeRef parent = MakeNode();
    const NodeRef child = MakeNode();
    parent->InsertChild(child.Get(), 1);
    ASSERT_EQ(parent->ComputeMaxDepth(), 2U);
    parent->GetChildren().clear();

    child->RemoveParent(/*release=*/1);
    EXPECT_EQ(child->GetParent(), nullptr);
    EXPECT_EQ(child->GetReferenceCount(), 2U) << "nothing is released";
    EXPECT_EQ(parent->ComputeMaxDepth(), 2U) << "nothing is reset";
    child->Release();
}

// ---- SetCache

TEST(VisDataTree, SettingACacheLinksBothWays)
{
    const NodeRef node = MakeNode();
    VisDataTree::VisDataTreeCache cache(nullptr);
    node->SetCache(&cache);
    EXPECT_EQ(node->GetCache(), &cache);
    EXPECT_EQ(cache.GetNode(), node.Get());

    node->SetCache(nullptr);
    EXPECT_EQ(node->GetCache(), nullptr);
    EXPECT_EQ(cache.GetNode(), nullptr);
}

TEST(VisDataTree, ReplacingACacheDirectlyLeavesTheNodeWithNone)
{
    const NodeRef node = MakeNode();
    VisDataTree::VisDataTreeCache first(node.Get());
    VisDataTree::VisDataTreeCache second(nullptr);
    node->SetCache(&second);
    EXPECT_EQ(node->GetCache(), nullptr) << "the order of calls is part of the contract";
    EXPECT_EQ(first.GetNode(), nullptr);
    EXPECT_EQ(second.GetNode(), nullptr);

    node->SetCache(&second);
    EXPECT_EQ(node->GetCache(), &second);
    node->SetCache(nullptr);
}

TEST(VisDataTree, SettingTheSameCacheAgainDoesNothing)
{
    const NodeRef node = MakeNode();
    CountingCache cache(nullptr);
    node->SetCache(&cache);
    const int resets = cache.resets;
    node->SetCache(&cache);
    EXPECT_EQ(cache.resets, resets);
    node->SetCache(nullptr);
}

TEST(VisDataTree, LinkingACacheResetsItAndThoseAboveItUpToTheFirstGap)
{
    SmallTree t;
    CountingCache ofRoot(nullptr);
    CountingCache ofA(nullptr);
    CountingCache ofD(nullptr);
    CountingCache ofF(nullptr);
    t.r->SetCache(&ofRoot);
    t.a->SetCache(&ofA);
    ofRoot.resets = ofA.resets = 0;

    t.d->SetCache(&ofD);
    EXPECT_EQ(ofD.resets, 1);
    EXPECT_EQ(ofA.resets, 1);
    EXPECT_EQ(ofRoot.resets, 1);

    t.f->SetCache(&ofF);
    EXPECT_EQ(ofF.resets, 1);
    EXPECT_EQ(ofRoot.resets, 1) << "C has no cache: the walk over caches ends there";
    for (VisDataTree* node : {t.r.Get(), t.a, t.d, t.f})
        node->SetCache(nullptr);
}

// ---- UpdateMerge

TEST(VisDataTree, MergingKeepsANodeThatIsNotMergeableMerged)
{
    const NodeRef node = MakeNode();
    node->SetIsMerged(1);
    node->UpdateMerge(/*merge=*/1, /*clear=*/0);
    EXPECT_EQ(node->IsMerged(), 1);
    node->UpdateMerge(1, 1);
    EXPECT_EQ(node->IsMerged(), 0);
}

TEST(VisDataTree, ClearingClearsEveryMergedFlagInTheSubtree)
{
    SmallTree t;
    for (VisDataTree* node : {t.r.Get(), t.a, t.d, t.f}) {
        node->SetIsMerged(1);
        node->SetIsMergeable(1);
    }
    t.a->UpdateMerge(/*merge=*/0, /*clear=*/1);
    EXPECT_EQ(t.a->IsMerged(), 0);
    EXPECT_EQ(t.d->IsMerged(), 0);
    EXPECT_EQ(t.r->IsMerged(), 1) << "above the node nothing changes";
    EXPECT_EQ(t.f->IsMerged(), 1);
}

TEST(VisDataTree, MergingSetsTheFlagOfEveryMergeableNode)
{
    SmallTree t;
    t.a->SetIsMergeable(3);
    t.e->SetIsMergeable(1);
    t.f->SetIsMerged(1);
    t.r->UpdateMerge(1, 1);
    EXPECT_EQ(t.a->IsMerged(), 1);
    EXPECT_EQ(t.e->IsMerged(), 1);
    EXPECT_EQ(t.r->IsMerged(), 0);
    EXPECT_EQ(t.f->IsMerged(), 0);
    t.r->UpdateMerge(0, 0);
    EXPECT_EQ(t.e->IsMerged(), 1) << "neither argument set: everything stays";
}

// ---- counts

TEST(VisDataTree, ASingleNodeIsItsOwnLeafInEveryRespect)
{
    const NodeRef node = MakeNode();
    EXPECT_EQ(node->ComputeDepth(), 0U);
    EXPECT_EQ(AsConst(node.Get()).ComputeMaxDepth(), 1U);
    EXPECT_EQ(node->ComputeMaxDepth(), 1U);
    EXPECT_EQ(AsConst(node.Get()).ComputeNumberOfLeaves(), 1U);
    EXPECT_EQ(node->ComputeNumberOfLeaves(), 1U);
    EXPECT_EQ(node->ComputeNumberOfNodes(), 1U);
    EXPECT_EQ(node->GetFirstLeaf(), node.Get());
    EXPECT_EQ(node->GetLastLeaf(), node.Get());
    EXPECT_EQ(node->NextLeafNodeInHierarchy(nullptr), node.Get());
    EXPECT_EQ(node->PreviousLeafNodeInHierarchy(nullptr), node.Get());
    EXPECT_EQ(node->NextLeafNodeInHierarchy(node.Get()), node.Get());
}

TEST(VisDataTree, CountsTheLevelsLeavesAndNodesOfASubtree)
{
    SmallTree t;
    EXPECT_EQ(t.e->ComputeDepth(), 2U);
    EXPECT_EQ(t.r->ComputeMaxDepth(), 3U);
    EXPECT_EQ(t.b->ComputeMaxDepth(), 1U);
    EXPECT_EQ(t.r->ComputeNumberOfLeaves(), 4U);
    EXPECT_EQ(t.a->ComputeNumberOfLeaves(), 2U);
    EXPECT_EQ(t.r->ComputeNumberOfNodes(), 7U);
}

TEST(VisDataTree, TheConstCountsUseWhatIsRememberedAndRememberNothing)
{
    SmallTree t;
    ASSERT_EQ(AsConst(t.r.Get()).ComputeMaxDepth(), 3U);
    ASSERT_EQ(AsConst(t.r.Get()).ComputeNumberOfLeaves(), 4U);
    const NodeRef late = MakeNode();
    t.e->InsertChild(late.Get(), /*resetCaches=*/0);
    EXPECT_EQ(AsConst(t.r.Get()).ComputeMaxDepth(), 4U) << "nothing was remembered";

    ASSERT_EQ(t.a->ComputeNumberOfLeaves(), 2U);
    const NodeRef later = MakeNode();
    t.a->InsertChild(later.Get(), 0);
    EXPECT_EQ(AsConst(t.r.Get()).ComputeNumberOfLeaves(), 4U) << "A's stale count is used";
}

// ---- leaves

TEST(VisDataTree, FirstAndLastLeafFollowTheOuterChildren)
{
    SmallTree t;
    EXPECT_EQ(t.r->GetFirstLeaf(), t.d);
    EXPECT_EQ(t.r->GetLastLeaf(), t.f);
    EXPECT_EQ(AsConst(t.r.Get()).GetFirstLeaf(), t.d);
    EXPECT_EQ(AsConst(t.r.Get()).GetLastLeaf(), t.f);
    EXPECT_EQ(t.a->GetLastLeaf(), t.e);
}

TEST(VisDataTree, TheLeafWalkOfAnInnerNodeGivesNull)
{
    SmallTree t;
    EXPECT_EQ(t.a->NextLeafNodeInHierarchy(nullptr), nullptr);
    EXPECT_EQ(t.a->PreviousLeafNodeInHierarchy(t.r.Get()), nullptr);
}

TEST(VisDataTree, TheLeafWalkGoesAroundTheWholeTree)
{
    SmallTree t;
    EXPECT_EQ(t.d->NextLeafNodeInHierarchy(nullptr), t.e);
    EXPECT_EQ(t.e->NextLeafNodeInHierarchy(nullptr), t.b);
    EXPECT_EQ(t.b->NextLeafNodeInHierarchy(nullptr), t.f);
    EXPECT_EQ(t.f->NextLeafNodeInHierarchy(nullptr), t.d);
    EXPECT_EQ(t.d->PreviousLeafNodeInHierarchy(nullptr), t.f);
    EXPECT_EQ(t.f->PreviousLeafNodeInHierarchy(nullptr), t.b);
    EXPECT_EQ(t.b->PreviousLeafNodeInHierarchy(nullptr), t.e);
}

TEST(VisDataTree, AfterTheLastLeafBelowStopComesTheFirstLeafBelowStop)
{
    SmallTree t;
    EXPECT_EQ(t.e->NextLeafNodeInHierarchy(t.a), t.d);
    EXPECT_EQ(t.d->PreviousLeafNodeInHierarchy(t.a), t.e);
    EXPECT_EQ(t.f->NextLeafNodeInHierarchy(t.f), t.f);
}

TEST(VisDataTree, AStopThatIsNoAncestorWrapsAtTheRoot)
{
    SmallTree t;
    const NodeRef foreign = MakeNode();
    EXPECT_EQ(t.f->NextLeafNodeInHierarchy(foreign.Get()), t.d);
    EXPECT_EQ(t.f->NextLeafNodeInHierarchy(t.a), t.d);
}

// ---- ancestors

TEST(VisDataTree, TheLabelPathReadsFromTheLeafOrFromTheRoot)
{
    SmallTree t;
    EXPECT_EQ(Text(t.e->ComputeLabelUptoRoot(/*leafFirst=*/1)), "E/A/R");
    EXPECT_EQ(Text(t.e->ComputeLabelUptoRoot(/*leafFirst=*/0)), "R/A/E");
    t.a->SetLabel("");
    EXPECT_EQ(Text(t.e->ComputeLabelUptoRoot(1)), "E/R") << "ancestors without label are left out";
    EXPECT_EQ(Text(t.e->ComputeLabelUptoRoot(0)), "R/E");
}

TEST(VisDataTree, AnEmptyOwnLabelLeavesItsSeparatorOnlyWhenTheLeafComesFirst)
{
    const NodeRef parent = MakeNode("P");
    VisDataTree* const child = Append(parent.Get());
    EXPECT_EQ(Text(child->ComputeLabelUptoRoot(1)), "/P");
    EXPECT_EQ(Text(child->ComputeLabelUptoRoot(0)), "P");
}

TEST(VisDataTree, TheLabelPathOfNamelessNodesIsEmpty)
{
    const NodeRef parent = MakeNode();
    VisDataTree* const child = Append(parent.Get());
    EXPECT_EQ(Text(child->ComputeLabelUptoRoot(0)), "");
    EXPECT_EQ(Text(child->ComputeLabelUptoRoot(1)), "");
}

TEST(VisDataTree, AnIconInTheHierarchyIsTheNodesOwnOrAnAncestors)
{
    const NodeRef root = MakeNode();
    VisDataTree* const inner = Append(root.Get(), "", "icon");
    VisDataTree* const leaf = Append(inner);
    EXPECT_EQ(root->HasIconInHierarchy(), 0);
    EXPECT_EQ(inner->HasIconInHierarchy(), 1);
    EXPECT_EQ(leaf->HasIconInHierarchy(), 1);
}

TEST(VisDataTree, ANodeHasItsStrictAncestorsAsParents)
{
    SmallTree t;
    EXPECT_EQ(t.d->HasNodeAsParent(t.a), 1);
    EXPECT_EQ(t.d->HasNodeAsParent(t.r.Get()), 1);
    EXPECT_EQ(t.d->HasNodeAsParent(t.d), 0);
    EXPECT_EQ(t.d->HasNodeAsParent(t.b), 0);
    EXPECT_EQ(t.a->HasNodeAsParent(t.d), 0);
    EXPECT_EQ(t.d->HasNodeAsParent(nullptr), 0);
}

// ---- destruction

TEST(VisDataTree, DyingReleasesTheChildrenInOrderBeforeTheirYoungerSiblings)
{
    std::string record;
    {
        const NodeRef root = NodeRef::Adopt(new trees::RecordingNode("r", record));
        VisDataTree* const a = AppendRecording(root.Get(), "a", record);
        AppendRecording(root.Get(), "b", record);
        AppendRecording(a, "c", record);
        AppendRecording(a, "d", record);
    }
    EXPECT_EQ(record, "racdb");
}

TEST(VisDataTree, AChildThatIsHeldElsewhereOutlivesItsParentWithoutLink)
{
    const NodeRef child = MakeNode();
    VisDataTree* grandchild = nullptr;
    {
        const NodeRef parent = MakeNode();
        parent->InsertChild(child.Get(), 1);
        grandchild = Append(child.Get());
    }
    EXPECT_EQ(child->GetParent(), nullptr);
    EXPECT_EQ(child->GetReferenceCount(), 1U);
    EXPECT_EQ(child->GetChildren(), (std::vector<VisDataTree*>{grandchild}));
}

TEST(VisDataTree, ADyingParentLeavesTheLinkOfAChildThatPointsElsewhere)
{
    const NodeRef other = MakeNode();
    const NodeRef child = MakeNode();
    other->InsertChild(child.Get(), 1);
    {
        const NodeRef parent = MakeNode();
        child->AddRef();
        parent->GetChildren().push_back(child.Get());
    }
    EXPECT_EQ(child->GetParent(), other.Get());
    EXPECT_EQ(child->GetReferenceCount(), 2U);
}

TEST(VisDataTree, DyingLeavesTheCacheAlone)
{
    CountingCache cache(nullptr);
    const void* former = nullptr;
    {
        const NodeRef node = MakeNode();
        node->SetCache(&cache);
        former = node.Get();
        cache.resets = 0;
    }
    EXPECT_EQ(static_cast<const void*>(cache.GetNode()), former)
        << "whoever owns the cache detaches it first";
    EXPECT_EQ(cache.resets, 0);
}

TEST(VisDataTree, ANodeThatDiesInADerivedDestructorTakesItsWholeSubtreeAtOnce)
{
    // The owner frees another tree while it dies itself: that tree is gone when Release returns.
    struct Owner : VisDataTree {
        explicit Owner(std::string& record) : VisDataTree(nullptr, "", ""), record_(record) {}
        ~Owner() override
        {
            owned->Release();
            record_ += "!";
        }
        VisDataTree* owned = nullptr;
        std::string& record_;
    };
    std::string record;
    const NodeRef root = MakeNode();
    auto* const owner = new Owner(record);
    root->InsertChild(owner, 1);
    owner->Release();
    AppendRecording(owner, "child", record);
    owner->owned = new trees::RecordingNode("x", record);
    AppendRecording(owner->owned, "y", record);

    owner->RemoveParent(/*release=*/1);
    EXPECT_EQ(record, "xy!child");
}

TEST(VisDataTree, ATreeDestroyedByAWalkMayMoveAPendingSiblingElsewhere)
{
    struct Mover : VisDataTree {
        Mover() : VisDataTree(nullptr, "", "") {}
        ~Mover() override { refuge->InsertChild(sibling, 1); }
        VisDataTree* refuge = nullptr;
        VisDataTree* sibling = nullptr;
    };
    const NodeRef refuge = MakeNode();
    NodeRef root = MakeNode();
    auto* const mover = new Mover;
    root->InsertChild(mover, 1);
    mover->Release();
    VisDataTree* const sibling = Append(root.Get(), "kept");
    mover->refuge = refuge.Get();
    mover->sibling = sibling;

    root = NodeRef();
    ASSERT_EQ(refuge->GetChildren(), (std::vector<VisDataTree*>{sibling}));
    EXPECT_EQ(sibling->GetReferenceCount(), 1U);
    EXPECT_EQ(sibling->GetParent(), refuge.Get());
}

// ---- null entries put in by hand

TEST(VisDataTree, WalksSkipNullEntriesOfTheChildren)
{
    const NodeRef root = MakeNode();
    VisDataTree* const child = Append(root.Get());
    root->GetChildren().insert(root->GetChildren().begin(), nullptr);
    EXPECT_EQ(root->ComputeNumberOfNodes(), 2U);
    EXPECT_EQ(AsConst(root.Get()).ComputeMaxDepth(), 2U);
    EXPECT_EQ(AsConst(root.Get()).ComputeNumberOfLeaves(), 1U);
    EXPECT_EQ(root->GetFirstLeaf(), root.Get());
    EXPECT_EQ(child->NextLeafNodeInHierarchy(nullptr), root.Get());
    root->UpdateMerge(1, 1);
}

// ---- depth

TEST(VisDataTree, EveryOperationSurvivesATreeOfManyLevels)
{
    constexpr unsigned int LEVELS = trees::MANY_LEVELS;
    VisDataTree* last = nullptr;
    const NodeRef root = MakeChain(LEVELS, &last);
    EXPECT_EQ(AsConst(root.Get()).ComputeMaxDepth(), LEVELS);
    EXPECT_EQ(root->ComputeMaxDepth(), LEVELS);
    EXPECT_EQ(root->ComputeNumberOfLeaves(), 1U);
    EXPECT_EQ(root->ComputeNumberOfNodes(), LEVELS);
    EXPECT_EQ(last->ComputeDepth(), LEVELS - 1);
    EXPECT_EQ(root->GetFirstLeaf(), last);
    EXPECT_EQ(root->GetLastLeaf(), last);
    EXPECT_EQ(last->NextLeafNodeInHierarchy(nullptr), last);
    EXPECT_EQ(Text(last->ComputeLabelUptoRoot(0)), "root");
    EXPECT_EQ(last->HasIconInHierarchy(), 0);
    EXPECT_EQ(last->HasNodeAsParent(root.Get()), 1);
    root->SetIsMergeable(1);
    root->UpdateMerge(1, 0);
    Append(last);
    EXPECT_EQ(root->ComputeMaxDepth(), LEVELS + 1);
}
