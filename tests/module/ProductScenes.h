#ifndef module_ProductScenes_h
#define module_ProductScenes_h

// Scenes whose reps show products with identifiers, viewers and loaders, for the tests of what
// leads from one scene to another.

#include "VisPathUtility.h"

#include "core/ProductObjects.h"
#include "core/SceneReps.h"
#include "core/SceneViewpoint.h"
#include "core/StandaloneViewer.h"
#include "support/TestScene.h"

#include "KUVProduct.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

namespace products {

using IDs = std::vector<KUVUnicodeString>;
using Reps = std::vector<KUVRep*>;

/// A viewpoint of the plane.
class FlatViewpoint : public KUVViewpoint {
    KUV_DECLARE_CLASS
public:
    KUVViewer* GetViewer() const override { return nullptr; }
};

inline constexpr unsigned char SEARCH_SCENE = 0;
inline constexpr unsigned char ASK_LOADERS = 1;
inline constexpr KUVResult FAILURE = static_cast<KUVResult>(0x80004005U);

inline std::string Text(const IDs& ids)
{
    std::string text;
    for (const KUVUnicodeString& id : ids)
        text += (text.empty() ? "" : " ") + std::string(id.GetUtf8());
    return text;
}

inline void ShowObject(KUVRep* rep, KUVBaseUnknown* adopted)
{
    const support::Held<KUVBaseUnknown> object(adopted);
    const support::Held<KUVModelIdentificator> identificator(new KUVModelIdentificator(adopted));
    rep->SetModelIdentificator(identificator.get());
}

inline support::Held<core::ProductReference> Reference(const std::string& id)
{
    return support::Held<core::ProductReference>(core::ProductReference::Create(
        "product", KUVUnicodeString(id), core::ProductKind::Assembly));
}

inline support::Held<core::ProductInstance> Instance(const std::string& referenceId,
                                                     const std::string& id)
{
    return support::Held<core::ProductInstance>(core::ProductInstance::Create(
        Reference(referenceId).get(), "instance", KUVUnicodeString(id)));
}

/// An occurrence of the product `reference` put into its assembly as `instance`.
inline core::ProductOccurrence* Occurrence(const std::string& instance,
                                           const std::string& reference)
{
    return core::ProductOccurrence::Create(Instance(reference, instance).get());
}

/// A loader that gives the reps that a test tells it.
class LightLoader : public VisNativeProductLoader {
public:
    using VisNativeProductLoader::ForgetProductID;
    using VisNativeProductLoader::SetProductID;

    KUVResult ComputeRepPathFromPathID(const IDs& ids, KUVRepPath& path) override
    {
        asked += Text(ids) + "; ";
        for (KUVRep* const rep : reps)
            path.AddRep(rep, 1);
        if (locks)
            path.LockPath();
        return result;
    }

    std::string asked;
    std::vector<KUVRep*> reps;
    KUVResult result = KUV_OK;
    bool locks = false;
};

/// Registers a loader with a viewer while it lives.
class Registered {
public:
    Registered(KUVViewer* viewer, LightLoader* loader) : viewer_(viewer), loader_(loader)
    {
        VisProductLoaderServices::RegisterProductLoader(viewer_, loader_);
    }
    ~Registered() { VisProductLoaderServices::UnregisterProductLoader(viewer_, loader_); }
    Registered(const Registered&) = delete;
    Registered& operator=(const Registered&) = delete;

private:
    KUVViewer* viewer_;
    LightLoader* loader_;
};

/// Root > Pump (P) > Rotor (r R) > Blade, Housing (h H) > Seal (s S), shown by a viewer.
struct ProductScene {
    support::TestScene scene;
    core::SceneOccurrenceRep* pump =
        Add(scene.Root(), core::ProductOccurrence::CreateRoot(Reference("P").get()));
    core::SceneOccurrenceRep* rotor = Add(pump, Occurrence("r", "R"));
    core::SceneShapeRep* blade = scene.AddShape(rotor, "Blade", {10, 20});
    core::SceneOccurrenceRep* housing = Add(pump, Occurrence("h", "H"));
    core::SceneOccurrenceRep* seal = Add(housing, Occurrence("s", "S"));
    support::Held<core::StandaloneViewer> viewer{new core::StandaloneViewer};

    ProductScene()
    {
        viewer->SetMain3DViewpoint(&scene.Viewpoint());
        scene.Viewpoint().SetViewer(viewer.get());
    }
    ~ProductScene()
    {
        scene.Viewpoint().SetViewer(nullptr);
        viewer->SetMain3DViewpoint(nullptr);
    }
    ProductScene(const ProductScene&) = delete;
    ProductScene& operator=(const ProductScene&) = delete;

    /// A rep that shows `adopted`.
    core::SceneOccurrenceRep* Add(KUV3DBagRep* parent, KUVBaseUnknown* adopted)
    {
        auto* const rep = scene.Add(parent, core::SceneOccurrenceRep::CreateRep(nullptr));
        ShowObject(rep, adopted);
        return rep;
    }

    /// A path of this scene's viewpoint, its cursor at `cursor`.
    KUVPickPath Path(const std::vector<KUVRep*>& reps, int cursor, const list<int>& numbers = {})
    {
        KUVPickPath path(&scene.Viewpoint());
        for (KUVRep* const rep : reps) {
            path.AddRep(rep, 1);
            path.Push(rep);
        }
        path.Load(numbers);
        support::MoveCursor(path, cursor);
        return path;
    }

    KUVResult Find(const IDs& ids, KUVPickPath& result, unsigned char useLoaders = SEARCH_SCENE)
    {
        return VisPathUtility::GenerateRepPathFromProductIDs(ids, &scene.Viewpoint(), &result,
                                                             useLoaders);
    }

    /// The reps found for `ids`; fails the test when there are none.
    std::vector<KUVRep*> Found(const IDs& ids, unsigned char useLoaders = SEARCH_SCENE)
    {
        KUVPickPath result;
        EXPECT_EQ(Find(ids, result, useLoaders), KUV_OK) << Text(ids);
        return RepsOf(result);
    }

    static std::vector<KUVRep*> RepsOf(KUVPickPath& path)
    {
        std::vector<KUVRep*> reps;
        for (int i = 0; i < path.Size(); ++i)
            reps.push_back(path[i]);
        return reps;
    }
};

/// What a path is, in one word for comparison.
inline std::string Describe(KUVPickPath& path)
{
    return std::to_string(path.Size()) + " reps, cursor " +
           std::to_string(path.GetCursorPosition()) + ", " +
           std::to_string(path.GetSubElementList()->Count()) + " numbers";
}

/// A light representation of the pump: a bag for each identifier.
struct LightScene {
    support::TestScene scene;
    LightLoader loader;
    std::vector<KUV3DBagRep*> levels;

    explicit LightScene(const IDs& ids)
    {
        levels.push_back(scene.Root());
        for (const KUVUnicodeString& id : ids) {
            levels.push_back(scene.Add(levels.back(), KUV3DFilterBagRep::CreateRep()));
            LightLoader::SetProductID(levels.back(), id);
        }
    }
    ~LightScene()
    {
        for (const KUV3DBagRep* const level : levels)
            LightLoader::ForgetProductID(level);
    }
    LightScene(const LightScene&) = delete;
    LightScene& operator=(const LightScene&) = delete;

    /// The path to the last level, its cursor there.
    KUVPickPath Path(KUVViewpoint* viewpoint)
    {
        KUVPickPath path(viewpoint);
        for (std::size_t i = 1; i < levels.size(); ++i)
            path.AddRep(levels[i], 1);
        return path;
    }
};

}  // namespace products

#endif
