#include "support/TestScene.h"

#include "core/ProductObjects.h"

namespace support {

// ---- free rep

KUV_IMPLEMENT_CLASS(FreeRep, KUVRep, "KUVTests")

FreeRep::FreeRep() = default;
FreeRep::~FreeRep() = default;

void FreeRep::SetPrimitive(int number, KUVGraphicPrimitive* primitive)
{
    primitives_.emplace_back(number, primitive);
}

KUVGraphicPrimitive* FreeRep::GetGraphicPrimitive(int number) const
{
    for (const auto& entry : primitives_) {
        if (entry.first == number)
            return entry.second.get();
    }
    return nullptr;
}

void FreeRep::SetChildren(std::vector<KUVRep*> children)
{
    children_.Empty();
    for (KUVRep* const child : children)
        children_.Append(child);
    hasChildren_ = true;
}

const list<KUVRep>* FreeRep::GetChildren() const { return hasChildren_ ? &children_ : nullptr; }

// ---- scene

TestScene::TestScene() : root_(KUV3DBagRep::CreateRep()) {}

TestScene::~TestScene()
{
    if (viewpoint_)
        viewpoint_->Release();
    root_->Release();
}

void TestScene::Keep(KUV3DBagRep* parent, KUVRep* rep)
{
    parent->AddChild(rep);
    rep->Release();
}

KUV3DBagRep* TestScene::AddBag(KUV3DBagRep* parent)
{
    return Add(parent, KUV3DBagRep::CreateRep());
}

core::SceneOccurrenceRep* TestScene::AddOccurrence(KUV3DBagRep* parent, const std::string& name)
{
    return AddOccurrence(parent, name, false);
}

core::SceneOccurrenceRep* TestScene::AddRootOccurrence(KUV3DBagRep* parent, const std::string& name)
{
    return AddOccurrence(parent, name, true);
}

core::SceneOccurrenceRep* TestScene::AddOccurrence(KUV3DBagRep* parent, const std::string& name,
                                                   bool isRoot)
{
    const KUVUnicodeString text(name);
    const Held<core::ProductReference> reference(
        core::ProductReference::Create(text, text, core::ProductKind::Assembly));
    const Held<core::ProductInstance> instance(
        core::ProductInstance::Create(reference.get(), text, text));
    const Held<core::ProductOccurrence> occurrence(
        isRoot ? core::ProductOccurrence::CreateRoot(reference.get())
               : core::ProductOccurrence::Create(instance.get()));
    const Held<KUVModelIdentificator> identificator(new KUVModelIdentificator(occurrence.get()));
    return Add(parent, core::SceneOccurrenceRep::CreateRep(identificator.get()));
}

core::SceneShapeRep* TestScene::AddShape(KUV3DBagRep* parent, const std::string& name,
                                         std::vector<std::uint32_t> trianglesPerFace,
                                         std::uint32_t edges, std::uint32_t vertices)
{
    auto geometry = core::PartGeometry::Make(std::move(trianglesPerFace), edges, vertices, {});
    if (name.empty())
        return Add(parent, core::SceneShapeRep::CreateRep(std::move(geometry), nullptr));
    const Held<core::ShapeObject> shape(core::ShapeObject::Create(KUVUnicodeString(name)));
    const Held<KUVModelIdentificator> identificator(new KUVModelIdentificator(shape.get()));
    return Add(parent, core::SceneShapeRep::CreateRep(std::move(geometry), identificator.get()));
}

FreeRep* TestScene::AddFreeRep(KUV3DBagRep* parent) { return Add(parent, new FreeRep); }

core::SceneViewpoint& TestScene::Viewpoint()
{
    if (!viewpoint_)
        viewpoint_ = core::SceneViewpoint::Create(root_);
    return *viewpoint_;
}

// ---- paths

void MoveCursor(KUVRepPath& path, int cursor)
{
    path.InitToTopRep();
    for (int i = -1; i < cursor; ++i) {
        if (!path.NextChildRep())
            path.InitToLeafRep();
    }
}

KUVPickPath PathTo(const std::vector<KUVRep*>& reps, const list<int>& subElements)
{
    return PathTo(reps, subElements, static_cast<int>(reps.size()) - 1);
}

KUVPickPath PathTo(const std::vector<KUVRep*>& reps, const list<int>& subElements, int cursor)
{
    KUVPickPath path;
    for (KUVRep* const rep : reps)
        path.AddRep(rep, 1);
    path.Load(subElements);
    MoveCursor(path, cursor);
    return path;
}

list<KUVPickPath> ListOf(std::vector<KUVPickPath>& paths)
{
    list<KUVPickPath> entries;
    for (KUVPickPath& path : paths)
        entries.Append(&path);
    return entries;
}

}  // namespace support
