#ifndef support_TestScene_h
#define support_TestScene_h

// Scenes and pick paths for tests, made of the standalone host's real reps.

#include "core/PartGeometry.h"
#include "core/SceneReps.h"
#include "core/SceneViewpoint.h"

#include "KUV3D.h"

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace support {

/// Gives a host object's reference back at the end.
struct ReleaseObject {
    void operator()(KUVBaseUnknown* object) const
    {
        if (object)
            object->Release();
    }
};

/// Holds one reference; made from a new object.
template <class T>
using Held = std::unique_ptr<T, ReleaseObject>;

/// A leaf whose primitives a test chooses one by one, and whose list of children as well.
class FreeRep : public KUVRep {
    KUV_DECLARE_CLASS
public:
    FreeRep();
    ~FreeRep() override;

    /// Takes the reference over. Null stands for a number without a primitive.
    void SetPrimitive(int number, KUVGraphicPrimitive* primitive);
    KUVGraphicPrimitive* GetGraphicPrimitive(int number) const override;
    /// Shown as the children; nothing is referenced. Entries may be absent.
    void SetChildren(std::vector<KUVRep*> children);
    const list<KUVRep>* GetChildren() const override;

private:
    std::vector<std::pair<int, Held<KUVGraphicPrimitive>>> primitives_;
    list<KUVRep> children_;
    bool hasChildren_ = false;
};

/// Makes reps and holds them, and everything below them, until it ends.
class TestScene {
public:
    TestScene();
    ~TestScene();
    TestScene(const TestScene&) = delete;
    TestScene& operator=(const TestScene&) = delete;

    /// The root of the scene, a plain bag.
    KUV3DBagRep* Root() const { return root_; }
    /// A bag that shows no model object.
    KUV3DBagRep* AddBag(KUV3DBagRep* parent);
    /// A filter bag with a model object of the class "OXMInstanceOccurrence" and that alias.
    core::SceneOccurrenceRep* AddOccurrence(KUV3DBagRep* parent, const std::string& name);
    /// The same of the class "OXMRootOccurrence".
    core::SceneOccurrenceRep* AddRootOccurrence(KUV3DBagRep* parent, const std::string& name);
    /// A shape with a face for each number of triangles, and a model object with that alias; an
    /// empty name stands for no model object.
    core::SceneShapeRep* AddShape(KUV3DBagRep* parent, const std::string& name,
                                  std::vector<std::uint32_t> trianglesPerFace,
                                  std::uint32_t edges = 0, std::uint32_t vertices = 0);
    FreeRep* AddFreeRep(KUV3DBagRep* parent);
    /// Takes `rep`'s reference over and hangs it below `parent`.
    template <class Rep>
    Rep* Add(KUV3DBagRep* parent, Rep* rep)
    {
        Keep(parent, rep);
        return rep;
    }

    /// Made on the first call, then kept.
    core::SceneViewpoint& Viewpoint();

private:
    void Keep(KUV3DBagRep* parent, KUVRep* rep);
    core::SceneOccurrenceRep* AddOccurrence(KUV3DBagRep* parent, const std::string& name,
                                            bool isRoot);

    KUV3DBagRep* root_;
    core::SceneViewpoint* viewpoint_ = nullptr;
};

/// A path through `reps` with these sub-elements, its cursor on the last rep.
KUVPickPath PathTo(const std::vector<KUVRep*>& reps, const list<int>& subElements = {});
/// The same with the cursor at `cursor`: -1 before the first rep, the number of reps behind the
/// last.
KUVPickPath PathTo(const std::vector<KUVRep*>& reps, const list<int>& subElements, int cursor);
/// Puts the cursor at `cursor`.
void MoveCursor(KUVRepPath& path, int cursor);

/// The list that the module's services take.
list<KUVPickPath> ListOf(std::vector<KUVPickPath>& paths);

}  // namespace support

#endif
