#include "VisPathUtility.h"

#include "ProductScenes.h"

#include "core/SceneViewpoint.h"
#include "support/Allocations.h"
#include "support/TestScene.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <iostream>
#include <string>
#include <vector>

using products::ASK_LOADERS;
using products::Describe;
using products::FAILURE;
using products::FlatViewpoint;
using products::IDs;
using products::Instance;
using products::LightLoader;
using products::LightScene;
using products::Occurrence;
using products::ProductScene;
using products::Reference;
using products::Registered;
using products::Reps;
using products::SEARCH_SCENE;
using products::ShowObject;
using products::Text;
using support::FreeRep;
using support::Held;
using support::PathTo;
using support::TestScene;

// In a namespace with a name: compilers complain of identity operations that nobody calls
// elsewhere.
namespace path_products_test {

/// A component whose identificator a test chooses.
class OddComponent : public KUVBaseUnknown, public KUVIPLMComponent {
    KUV_DECLARE_CLASS
public:
    OddComponent(KUVResult result, KUVIAdpPLMIdentificator* identificator)
        : result_(result), identificator_(identificator)
    {
    }
    ~OddComponent() override
    {
        if (identificator_)
            identificator_->Release();
    }

    using KUVBaseUnknown::QueryInterface;
    KUVResult QueryInterface(KUVClassId interfaceId, void** result) override
    {
        if (interfaceId != KUVClassIdOf(KUVIPLMComponent::InterfaceName()))
            return KUVBaseUnknown::QueryInterface(interfaceId, result);
        AddRef();
        *result = static_cast<KUVIPLMComponent*>(this);
        return KUV_OK;
    }
    unsigned int AddInterfaceRef() override { return AddRef(); }
    unsigned int ReleaseInterface() override { return Release(); }
    KUVResult GetAdpIdentificator(KUVIAdpPLMIdentificator*& identificator) const override
    {
        if (result_ == KUV_OK && identificator_)
            identificator_->AddRef();
        identificator = identificator_;
        return result_;
    }

private:
    KUVResult result_;
    KUVIAdpPLMIdentificator* identificator_;
};

KUV_IMPLEMENT_CLASS(OddComponent, KUVBaseUnknown, "KUVTests")

}  // namespace path_products_test

namespace products {

KUV_IMPLEMENT_CLASS(FlatViewpoint, KUVViewpoint, "KUVTests")

}  // namespace products

using path_products_test::OddComponent;

// ---- AddProductID

TEST(VisPathUtilityProducts, AnObjectThatIsNoProductFailsAndLeavesTheListUnchanged)
{
    IDs ids{"before"};
    const Held<core::ShapeObject> shape(core::ShapeObject::Create("Blade"));
    EXPECT_EQ(VisPathUtility::AddProductID(ids, shape.get()), FAILURE);
    EXPECT_EQ(VisPathUtility::AddProductID(ids, nullptr), FAILURE);
    EXPECT_EQ(Text(ids), "before");
}

TEST(VisPathUtilityProducts, AnOccurrenceYieldsItsInstanceAndItsProductInThisOrder)
{
    IDs ids{"before"};
    const Held<core::ProductOccurrence> rotor(Occurrence("r", "R"));
    EXPECT_EQ(VisPathUtility::AddProductID(ids, rotor.get()), 0);
    EXPECT_EQ(Text(ids), "before r R");
    const Held<core::ProductOccurrence> root(
        core::ProductOccurrence::CreateRoot(Reference("P").get()));
    EXPECT_EQ(VisPathUtility::AddProductID(ids, root.get()), 0);
    EXPECT_EQ(Text(ids), "before r R P") << "the root has no instance";
}

TEST(VisPathUtilityProducts, AComponentYieldsItsOwnIdentifier)
{
    IDs ids;
    EXPECT_EQ(VisPathUtility::AddProductID(ids, Reference("R").get()), 0);
    EXPECT_EQ(VisPathUtility::AddProductID(ids, Instance("R", "r").get()), 0);
    EXPECT_EQ(Text(ids), "R r");
}

TEST(VisPathUtilityProducts, IdentifiersThatAreNotValidRemotelyAreLeftOut)
{
    IDs ids;
    const Held<core::ProductOccurrence> local(Occurrence("", "R"));
    EXPECT_EQ(VisPathUtility::AddProductID(ids, local.get()), 0);
    EXPECT_EQ(Text(ids), "R");
    const Held<core::ProductOccurrence> nowhere(Occurrence("", ""));
    EXPECT_EQ(VisPathUtility::AddProductID(ids, nowhere.get()), FAILURE);
    EXPECT_EQ(Text(ids), "R");
}

TEST(VisPathUtilityProducts, AComponentThatGivesNoIdentificatorIsLeftOut)
{
    IDs ids;
    const Held<OddComponent> none(new OddComponent(KUV_OK, nullptr));
    EXPECT_EQ(VisPathUtility::AddProductID(ids, none.get()), FAILURE);
    const Held<OddComponent> fails(new OddComponent(KUV_FAIL, new KUVIAdpPLMIdentificator("X", 1)));
    EXPECT_EQ(VisPathUtility::AddProductID(ids, fails.get()), FAILURE)
        << "what a failed call leaves behind is neither used nor released";
    EXPECT_EQ(Text(ids), "");
    const Held<OddComponent> gives(new OddComponent(KUV_OK, new KUVIAdpPLMIdentificator("X", 1)));
    EXPECT_EQ(VisPathUtility::AddProductID(ids, gives.get()), 0);
    EXPECT_EQ(Text(ids), "X");
}

// ---- GetProductIDFromProductLight

TEST(VisPathUtilityProducts, TheProductsOfAllRepsOfAPathAreListedWhateverItsCursor)
{
    const ProductScene full;
    LightScene light({"P", "r", "R"});
    const Registered registered(full.viewer.get(), &light.loader);
    KUVPickPath path = light.Path(nullptr);
    path.AddRep(full.blade, 1);
    for (const int cursor : {-1, 0, 3}) {
        support::MoveCursor(path, cursor);
        path.LockPath();
        IDs ids{"before"};
        EXPECT_EQ(VisPathUtility::GetProductIDFromProductLight(full.viewer.get(), path, ids), 0);
        EXPECT_EQ(Text(ids), "before P r R") << "no loader shows anything under the blade";
        EXPECT_EQ(path.UnlockPath(), 1);
        EXPECT_EQ(path.GetCursorPosition(), cursor);
    }
}

TEST(VisPathUtilityProducts, WithoutViewerLoadersOrProductsNothingIsListed)
{
    ProductScene full;
    LightScene light({"P"});
    KUVPickPath path = light.Path(nullptr);
    IDs ids;
    EXPECT_EQ(VisPathUtility::GetProductIDFromProductLight(full.viewer.get(), path, ids), FAILURE)
        << "no loader is registered";
    const Registered registered(full.viewer.get(), &light.loader);
    EXPECT_EQ(VisPathUtility::GetProductIDFromProductLight(nullptr, path, ids), FAILURE);
    KUVPickPath other = full.Path({full.pump}, 0);
    EXPECT_EQ(VisPathUtility::GetProductIDFromProductLight(full.viewer.get(), other, ids), FAILURE);
    KUVPickPath empty;
    EXPECT_EQ(VisPathUtility::GetProductIDFromProductLight(full.viewer.get(), empty, ids), FAILURE);
    EXPECT_TRUE(ids.empty());
}

// ---- GenerateRepPathFromProductIDs, in the scene

TEST(VisPathUtilityProducts, AListOfIdentifiersLeadsToTheirRep)
{
    ProductScene full;
    EXPECT_EQ(full.Found({"P"}), Reps({full.pump}));
    EXPECT_EQ(full.Found({"P", "r", "R"}), Reps({full.pump, full.rotor}));
    EXPECT_EQ(full.Found({"P", "h", "H", "s", "S"}), Reps({full.pump, full.housing, full.seal}));
}

TEST(VisPathUtilityProducts, TheResultIsClearedAndItsCursorStandsBeforeTheFirstRep)
{
    ProductScene full;
    KUVPickPath result = full.Path({full.blade, full.blade, full.seal}, 1, {1, 2});
    result.SetIntersection({1.0f, 2.0f, 3.0f});
    result.LockPath();
    ASSERT_EQ(full.Find({"P", "r", "R"}, result), 0);
    EXPECT_EQ(result.UnlockPath(), 1);
    EXPECT_EQ(Describe(result), "2 reps, cursor -1, 0 numbers");
    EXPECT_EQ(result.GetTopRep(), full.rotor);
    result.Pop();
    EXPECT_EQ(result.GetTopRep(), full.pump);
    result.Pop();
    EXPECT_EQ(result.GetTopRep(), nullptr) << "the stack was cleared";
    EXPECT_EQ(result.GetGlobalIntersection().z, 3.0f);
    EXPECT_EQ(result.GetViewpoint(), &full.scene.Viewpoint());
}

TEST(VisPathUtilityProducts, IdentifiersThatNobodyHasLeaveTheResultUntouched)
{
    ProductScene full;
    KUVPickPath result = full.Path({full.blade}, 0, {1});
    for (const IDs& ids : {IDs{"X"}, IDs{"P", "X"}, IDs{"P", "r", "X"}, IDs{"R"},
                           IDs{"P", "s", "S"}, IDs{"P", "r", "R", "X"}})
        EXPECT_EQ(full.Find(ids, result), FAILURE) << Text(ids);
    EXPECT_EQ(Describe(result), "1 reps, cursor 0, 1 numbers");
}

TEST(VisPathUtilityProducts, ABranchThatCannotCompleteKeepsLaterSiblingsFromBeingTried)
{
    ProductScene full;
    auto* const first = full.Add(full.pump, Occurrence("k", "K"));
    full.Add(first, Occurrence("x", "X"));
    auto* const second = full.Add(full.pump, Occurrence("k", "K"));
    auto* const wanted = full.Add(second, Occurrence("y", "Y"));
    KUVPickPath result;
    EXPECT_EQ(full.Find({"P", "k", "K", "y", "Y"}, result), FAILURE);
    EXPECT_EQ(full.Found({"P", "k", "K", "x", "X"}),
              Reps({full.pump, first, (*first->GetChildren())[0]}));
    first->RemoveChild((*first->GetChildren())[0]);
    EXPECT_EQ(full.Find({"P", "k", "K", "y", "Y"}, result), FAILURE)
        << "the first branch has no children at all";
    full.pump->RemoveChild(first);
    EXPECT_EQ(full.Found({"P", "k", "K", "y", "Y"}), Reps({full.pump, second, wanted}));
}

TEST(VisPathUtilityProducts, ABranchWithOtherIdentifiersIsDeadAndTheNextOneIsTried)
{
    ProductScene full;
    auto* const inside = full.Add(full.rotor, Occurrence("h", "H"));
    EXPECT_EQ(full.Found({"P", "h", "H"}), Reps({full.pump, full.housing}))
        << "what is below the rotor is not looked at";
    full.rotor->RemoveChild(inside);
    auto* const half = full.Add(full.pump, Occurrence("h", "X"));
    full.pump->RemoveChild(full.housing);
    KUVPickPath result;
    EXPECT_EQ(full.Find({"P", "h", "H"}, result), FAILURE) << "half a match is none";
    EXPECT_EQ(full.Found({"P", "h"}), Reps({full.pump, half}))
        << "a list that ends amid a rep's identifiers ends there";
}

TEST(VisPathUtilityProducts, RepsWithoutIdentifiersArePassedThrough)
{
    ProductScene full;
    KUV3DBagRep* const bag = full.scene.AddBag(full.housing);
    auto* const nameless = full.Add(bag, Occurrence("", ""));
    auto* const pin = full.Add(nameless, Occurrence("p", "N"));
    EXPECT_EQ(full.Found({"P", "h", "H", "p", "N"}),
              Reps({full.pump, full.housing, bag, nameless, pin}));
}

TEST(VisPathUtilityProducts, AnEmptyListLeadsToTheFirstRepThatHasIdentifiers)
{
    ProductScene full;
    EXPECT_EQ(full.Found({}), Reps({full.pump}));
}

TEST(VisPathUtilityProducts, TheRootRepNeverIsPartOfTheResult)
{
    ProductScene full;
    ShowObject(full.scene.Root(), Reference("T").release());
    EXPECT_EQ(full.Found({"T"}), Reps());
    EXPECT_EQ(full.Found({"T", "P"}), Reps({full.pump}));
}

TEST(VisPathUtilityProducts, TheSceneOfTheViewersMainViewpointIsSearched)
{
    ProductScene full;
    TestScene other;
    other.Viewpoint().SetViewer(full.viewer.get());
    KUVPickPath result;
    EXPECT_EQ(VisPathUtility::GenerateRepPathFromProductIDs({"P"}, &other.Viewpoint(), &result,
                                                            SEARCH_SCENE),
              0);
    EXPECT_EQ(ProductScene::RepsOf(result), Reps({full.pump}));
    other.Viewpoint().SetViewer(nullptr);
    EXPECT_EQ(VisPathUtility::GenerateRepPathFromProductIDs({"P"}, &other.Viewpoint(), &result,
                                                            SEARCH_SCENE),
              FAILURE)
        << "no viewer";
}

TEST(VisPathUtilityProducts, WithoutViewpointResultOrSceneNothingIsFound)
{
    ProductScene full;
    KUVPickPath result;
    for (const unsigned char useLoaders : {SEARCH_SCENE, ASK_LOADERS}) {
        EXPECT_EQ(
            VisPathUtility::GenerateRepPathFromProductIDs({"P"}, nullptr, &result, useLoaders),
            FAILURE);
        EXPECT_EQ(VisPathUtility::GenerateRepPathFromProductIDs({"P"}, &full.scene.Viewpoint(),
                                                                nullptr, useLoaders),
                  FAILURE);
    }
    full.viewer->SetMain3DViewpoint(nullptr);
    EXPECT_EQ(full.Find({"P"}, result), FAILURE) << "the viewer has no main viewpoint";
    const Held<core::SceneViewpoint> empty(core::SceneViewpoint::Create(nullptr));
    full.viewer->SetMain3DViewpoint(empty.get());
    EXPECT_EQ(full.Find({"P"}, result), FAILURE) << "a scene without reps";
}

TEST(VisPathUtilityProducts, ARepThatHangsBelowItselfIsSkipped)
{
    TestScene scene;
    const Held<core::StandaloneViewer> viewer(new core::StandaloneViewer);
    FreeRep* const loop = scene.AddFreeRep(scene.Root());
    auto* const pump = scene.AddRootOccurrence(scene.Root(), "Pump");
    FreeRep* const inner = scene.AddFreeRep(pump);
    loop->SetChildren({inner, loop});
    inner->SetChildren({loop});
    viewer->SetMain3DViewpoint(&scene.Viewpoint());
    scene.Viewpoint().SetViewer(viewer.get());
    KUVPickPath result;
    EXPECT_EQ(VisPathUtility::GenerateRepPathFromProductIDs({"Pump"}, &scene.Viewpoint(), &result,
                                                            SEARCH_SCENE),
              0);
    EXPECT_EQ(ProductScene::RepsOf(result), Reps({pump}));
    EXPECT_EQ(VisPathUtility::GenerateRepPathFromProductIDs({"Pump", "X"}, &scene.Viewpoint(),
                                                            &result, SEARCH_SCENE),
              FAILURE);
    scene.Viewpoint().SetViewer(nullptr);
    viewer->SetMain3DViewpoint(nullptr);
}

// ---- GenerateRepPathFromProductIDs, through loaders

TEST(VisPathUtilityProducts, TheFirstLoaderThatKnowsTheListGivesTheReps)
{
    ProductScene full;
    LightLoader ignorant;
    ignorant.result = KUV_FAIL;
    ignorant.reps = {full.seal};
    LightLoader knows;
    knows.reps = {full.pump, full.rotor};
    knows.locks = true;
    LightLoader late;
    const Registered first(full.viewer.get(), &ignorant);
    const Registered second(full.viewer.get(), &knows);
    const Registered third(full.viewer.get(), &late);
    KUVPickPath result = full.Path({full.blade}, 0, {1});
    result.LockPath();
    EXPECT_EQ(full.Find({"P", "R"}, result, ASK_LOADERS), 0);
    EXPECT_EQ(result.UnlockPath(), 1);
    EXPECT_EQ(ProductScene::RepsOf(result), Reps({full.pump, full.rotor}))
        << "what a loader leaves behind when it fails does not count";
    EXPECT_EQ(result.GetTopRep(), full.rotor);
    EXPECT_EQ(Describe(result), "2 reps, cursor 1, 0 numbers");
    EXPECT_EQ(ignorant.asked + knows.asked + late.asked, "P R; P R; ");
}

TEST(VisPathUtilityProducts, LevelsThatALoaderLeavesOutAreFilledIn)
{
    ProductScene full;
    LightLoader loader;
    const Registered registered(full.viewer.get(), &loader);
    loader.reps = {full.seal};
    EXPECT_EQ(full.Found({"S"}, ASK_LOADERS), Reps({full.pump, full.housing, full.seal}));
    loader.reps = {full.pump, full.seal};
    EXPECT_EQ(full.Found({"S"}, ASK_LOADERS), Reps({full.pump, full.housing, full.seal}));
}

TEST(VisPathUtilityProducts, ARepThatIsOutOfReachFails)
{
    ProductScene full;
    LightLoader loader;
    const Registered registered(full.viewer.get(), &loader);
    KUVPickPath result = full.Path({full.blade}, 0, {1});
    loader.reps = {full.rotor, full.seal};
    EXPECT_EQ(full.Find({"S"}, result, ASK_LOADERS), FAILURE) << "the seal is not in the rotor";
    loader.reps = {full.scene.Root()};
    EXPECT_EQ(full.Find({"S"}, result, ASK_LOADERS), FAILURE) << "the root is below nothing";
    EXPECT_EQ(result.Size(), 0);
}

TEST(VisPathUtilityProducts, WithoutALoaderThatKnowsTheListTheResultIsEmptied)
{
    ProductScene full;
    KUVPickPath result = full.Path({full.blade, full.blade}, 0, {1});
    EXPECT_EQ(full.Find({"P"}, result, ASK_LOADERS), FAILURE);
    EXPECT_EQ(Describe(result), "0 reps, cursor -1, 0 numbers");
    EXPECT_EQ(result.GetTopRep(), nullptr);
    full.scene.Viewpoint().SetViewer(nullptr);
    EXPECT_EQ(full.Find({"P"}, result, ASK_LOADERS), FAILURE) << "no viewer";
}

TEST(VisPathUtilityProducts, ASceneWhoseRootIsNoBagSucceedsWithAnEmptyResult)
{
    ProductScene full;
    LightLoader loader;
    loader.reps = {full.pump};
    const Registered registered(full.viewer.get(), &loader);
    const Held<core::SceneShapeRep> shape(core::SceneShapeRep::CreateRep(nullptr, nullptr));
    for (KUVRep* const root : {static_cast<KUVRep*>(shape.get()), static_cast<KUVRep*>(nullptr)}) {
        const Held<core::SceneViewpoint> viewpoint(core::SceneViewpoint::Create(root));
        viewpoint->SetViewer(full.viewer.get());
        KUVPickPath result = full.Path({full.blade}, 0, {1});
        EXPECT_EQ(VisPathUtility::GenerateRepPathFromProductIDs({"P"}, viewpoint.get(), &result,
                                                                ASK_LOADERS),
                  0);
        EXPECT_EQ(Describe(result), "0 reps, cursor -1, 0 numbers");
    }
    loader.reps = {};
    EXPECT_EQ(full.Found({"P"}, ASK_LOADERS), Reps()) << "a loader that gives no reps";
}

TEST(VisPathUtilityProducts, ASharedRepIsFoundWhereItIsNearestAndLoopsEnd)
{
    ProductScene full;
    KUV3DBagRep* const bag = full.scene.AddBag(full.seal);
    full.housing->AddChild(bag);
    FreeRep* const loop = full.scene.AddFreeRep(full.pump);
    loop->SetChildren({loop, full.pump, nullptr, full.blade});
    LightLoader loader;
    const Registered registered(full.viewer.get(), &loader);
    loader.reps = {bag};
    EXPECT_EQ(full.Found({"X"}, ASK_LOADERS), Reps({full.pump, full.housing, bag}));
    loader.reps = {loop, full.blade};
    KUVPickPath result;
    EXPECT_EQ(full.Find({"X"}, result, ASK_LOADERS), 0);
    EXPECT_EQ(ProductScene::RepsOf(result),
              Reps({full.pump, loop, full.pump, full.rotor, full.blade}))
        << "children end at the first absent entry, and the way back up is a way";
}

// ---- GetCorrespondingPathFromProductLight

TEST(VisPathUtilityProducts, TheCorrespondingPathIsWhatALoaderKnowsForTheProductsDownToTheCursor)
{
    ProductScene full;
    LightLoader loader;
    loader.reps = {full.seal};
    const Registered registered(full.viewer.get(), &loader);
    KUVPickPath source = full.Path({full.scene.Root(), full.pump, full.housing, full.seal}, 2);
    source.LockPath();
    KUVPickPath result = full.Path({full.blade}, 0, {1});
    EXPECT_EQ(VisPathUtility::GetCorrespondingPathFromProductLight(source, &result), 0);
    EXPECT_EQ(loader.asked, "P h H; ") << "from the root occurrence, not from the bag above it";
    EXPECT_EQ(ProductScene::RepsOf(result), Reps({full.pump, full.housing, full.seal}));
    EXPECT_EQ(source.UnlockPath(), 1);
    EXPECT_EQ(Describe(source), "4 reps, cursor 2, 0 numbers");
}

TEST(VisPathUtilityProducts, ASourceMayBeItsOwnCorrespondingPath)
{
    ProductScene full;
    LightLoader loader;
    loader.reps = {full.rotor};
    const Registered registered(full.viewer.get(), &loader);
    KUVPickPath path = full.Path({full.pump, full.rotor, full.blade}, 1);
    EXPECT_EQ(VisPathUtility::GetCorrespondingPathFromProductLight(path, &path), 0);
    EXPECT_EQ(loader.asked, "P r R; ");
    EXPECT_EQ(ProductScene::RepsOf(path), Reps({full.pump, full.rotor}));
}

TEST(VisPathUtilityProducts, ARootOccurrenceAtTheCursorIsNoneBeforeIt)
{
    ProductScene full;
    LightLoader loader;
    const Registered registered(full.viewer.get(), &loader);
    KUVPickPath result;
    KUVPickPath at = full.Path({full.scene.Root(), full.pump, full.rotor}, 1);
    EXPECT_EQ(VisPathUtility::GetCorrespondingPathFromProductLight(at, &result), FAILURE);
    KUVPickPath none = full.Path({full.housing, full.seal}, 1);
    EXPECT_EQ(VisPathUtility::GetCorrespondingPathFromProductLight(none, &result), FAILURE);
    KUVPickPath before = full.Path({full.pump, full.rotor}, -1);
    EXPECT_EQ(VisPathUtility::GetCorrespondingPathFromProductLight(before, &result), FAILURE);
    EXPECT_EQ(loader.asked, "");
}

TEST(VisPathUtilityProducts, RepsWithoutModelObjectAddNothingButObjectsWithoutIdentifierFail)
{
    ProductScene full;
    LightLoader loader;
    const Registered registered(full.viewer.get(), &loader);
    KUV3DBagRep* const bag = full.scene.AddBag(full.rotor);
    KUVPickPath result;
    KUVPickPath through = full.Path({full.pump, bag, full.rotor}, 2);
    EXPECT_EQ(VisPathUtility::GetCorrespondingPathFromProductLight(through, &result), 0);
    EXPECT_EQ(loader.asked, "P r R; ");
    KUVPickPath shape = full.Path({full.pump, full.rotor, full.blade}, 2);
    EXPECT_EQ(VisPathUtility::GetCorrespondingPathFromProductLight(shape, &result), FAILURE)
        << "the blade is a model object without identifier";
    KUVPickPath behind = full.Path({full.pump, full.rotor}, 2);
    EXPECT_EQ(VisPathUtility::GetCorrespondingPathFromProductLight(behind, &result), 0)
        << "a cursor behind the last rep";
}

TEST(VisPathUtilityProducts, WithoutResultViewpointOrViewerThereIsNoCorrespondingPath)
{
    ProductScene full;
    LightLoader loader;
    const Registered registered(full.viewer.get(), &loader);
    KUVPickPath source = full.Path({full.pump, full.rotor}, 1);
    EXPECT_EQ(VisPathUtility::GetCorrespondingPathFromProductLight(source, nullptr), FAILURE);
    KUVPickPath result = source;
    KUVPickPath nowhere = PathTo({full.pump, full.rotor});
    EXPECT_EQ(VisPathUtility::GetCorrespondingPathFromProductLight(nowhere, &result), FAILURE);
    EXPECT_EQ(result.Size(), 0);
    const Held<FlatViewpoint> flat(new FlatViewpoint);
    KUVPickPath drawn(flat.get());
    drawn.AddRep(full.pump, 1);
    drawn.AddRep(full.rotor, 1);
    EXPECT_EQ(VisPathUtility::GetCorrespondingPathFromProductLight(drawn, &result), FAILURE);
    full.scene.Viewpoint().SetViewer(nullptr);
    EXPECT_EQ(VisPathUtility::GetCorrespondingPathFromProductLight(source, &result), FAILURE);
    EXPECT_EQ(loader.asked, "");
}

// ---- memory

TEST(VisPathUtilityProducts, EveryFailingAllocationIsAFailureOfTheCall)
{
    ProductScene full;
    LightScene light({"P", "h", "H", "s", "S"});
    light.loader.reps = {full.seal};
    const Registered registered(full.viewer.get(), &light.loader);
    light.scene.Viewpoint().SetViewer(full.viewer.get());
    KUVPickPath source = light.Path(&light.scene.Viewpoint());
    KUVPickPath products = full.Path({full.pump, full.housing}, 1);
    const IDs wanted{"P", "h", "H", "s", "S"};
    const std::size_t failures = support::ForEveryFailingAllocation([&] {
        KUVPickPath result;
        unsigned char mapped = 0;
        VisPathUtility::StripPickPath(&source, result, 1, &mapped);
        KUVResult worst = mapped ? KUV_OK : KUV_FAIL;
        IDs ids;
        for (const KUVResult one :
             {full.Find(wanted, result), full.Find(wanted, result, ASK_LOADERS),
              VisPathUtility::GetCorrespondingPathFromProductLight(products, &result),
              VisPathUtility::GetProductIDFromProductLight(full.viewer.get(), source, ids),
              VisPathUtility::AddProductID(ids, full.seal->GetModelIdentificator()->GetId())})
            worst = one != KUV_OK ? one : worst;
        const support::UncountedAllocations uncounted;
        light.loader.asked = {};
        light.loader.asked.shrink_to_fit();
        if (worst == KUV_OK) {
            EXPECT_GE(ids.size(), 6U) << "a component that fails for want of memory is left out";
        }
    });
    EXPECT_GT(failures, 50U);
    std::cout << "count: " << failures << " failing allocations while looking for products\n";
}
