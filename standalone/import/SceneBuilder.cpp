#include "import/SceneBuilder.h"

#include "core/ProductObjects.h"

#include "KUV3D.h"

#include <memory>
#include <new>
#include <utility>

namespace kuvimport {

namespace {

struct Releaser {
    template <typename T>
    void operator()(T* object) const
    {
        object->Release();
    }
};

/// Holds the one reference that a `Create` hands out.
template <typename T>
using Held = std::unique_ptr<T, Releaser>;

/// A factory answers null when memory runs out; here that ends the whole scene.
template <typename T>
Held<T> Hold(T* object)
{
    if (!object)
        throw std::bad_alloc();
    return Held<T>(object);
}

KUVUnicodeString Text(const std::string& utf8) { return KUVUnicodeString(utf8); }

std::shared_ptr<const core::PartGeometry> SharedGeometry(const PartGeometry& source)
{
    auto native = std::make_shared<PartGeometry>();
    native->extent = source.extent;
    native->faceColours = source.faceColours;
    native->broughtTriangles = source.broughtTriangles;
    native->native = source.native;
    core::PartGeometry::Bounds bounds;
    if (!source.extent.IsEmpty()) {
        for (std::size_t i = 0; i < 3; ++i) {
            bounds.min[i] = static_cast<float>(source.extent.low[i]);
            bounds.max[i] = static_cast<float>(source.extent.high[i]);
        }
    }
    return core::PartGeometry::Make(source.trianglesPerFace, source.edges, source.vertices, bounds,
                                    std::move(native));
}

/// What the occurrences of one product share.
struct SharedProduct {
    Held<core::ProductReference> reference;
    /// Of the leaf reps; null without a shape.
    Held<KUVModelIdentificator> shape;
    std::vector<Held<core::ProductInstance>> components;
};

class Builder {
public:
    explicit Builder(const ImportedModel& model) : model_(model) {}

    Held<core::SceneOccurrenceRep> Run(const std::vector<std::uint32_t>& used)
    {
        geometries_.reserve(model_.geometries.size());
        for (const PartGeometry& geometry : model_.geometries)
            geometries_.push_back(SharedGeometry(geometry));
        products_.resize(model_.products.size());
        // Children first: a component's product object exists before the component asks for it.
        for (const std::uint32_t index : used)
            Share(index);
        return Expand();
    }

private:
    void Share(std::uint32_t index)
    {
        const Product& source = model_.products[index];
        SharedProduct& product = products_[index];
        const bool isPart = !source.IsAssembly() && source.components.empty();
        product.reference = Hold(core::ProductReference::Create(
            Text(source.name), Text(source.id),
            isPart ? core::ProductKind::Part : core::ProductKind::Assembly));
        if (source.geometry < geometries_.size()) {
            const auto object = Hold(core::ShapeObject::Create(
                Text(source.shapeName.empty() ? source.name : source.shapeName),
                "VisLevelSelectorGeometry", source.colour.value_or(0)));
            product.shape = Hold(new KUVModelIdentificator(object.get()));
        }
        product.components.reserve(source.components.size());
        for (const Component& component : source.components)
            product.components.push_back(
                Hold(core::ProductInstance::Create(products_[component.product].reference.get(),
                                                   Text(component.name), Text(component.id))));
    }

    Held<core::SceneOccurrenceRep> Expand()
    {
        using Place = std::pair<core::SceneOccurrenceRep*, std::uint32_t>;
        const auto rootObject =
            Hold(core::ProductOccurrence::CreateRoot(products_[model_.root].reference.get()));
        Held<core::SceneOccurrenceRep> root = NewRep(*rootObject);
        std::vector<Place> pending{{root.get(), model_.root}};
        while (!pending.empty()) {
            const auto [rep, index] = pending.back();
            pending.pop_back();
            AddShape(*rep, index);
            const Product& product = model_.products[index];
            for (std::size_t i = 0; i < product.components.size(); ++i) {
                const Component& component = product.components[i];
                const auto object =
                    Hold(core::ProductOccurrence::Create(products_[index].components[i].get()));
                const auto child = NewRep(*object);
                if (!component.placement.IsIdentity())
                    child->SetTransformation({component.placement.rows});
                if (component.colour)
                    child->SetColour(*component.colour);
                rep->AddChild(child.get());
                pending.emplace_back(child.get(), component.product);
            }
        }
        return root;
    }

    static Held<core::SceneOccurrenceRep> NewRep(core::ProductOccurrence& object)
    {
        const auto identificator = Hold(new KUVModelIdentificator(&object));
        return Hold(core::SceneOccurrenceRep::CreateRep(identificator.get()));
    }

    void AddShape(core::SceneOccurrenceRep& rep, std::uint32_t index) const
    {
        const std::uint32_t geometry = model_.products[index].geometry;
        if (geometry >= geometries_.size())
            return;
        const auto leaf = Hold(
            core::SceneShapeRep::CreateRep(geometries_[geometry], products_[index].shape.get()));
        rep.AddChild(leaf.get());
    }

    const ImportedModel& model_;
    std::vector<std::shared_ptr<const core::PartGeometry>> geometries_;
    std::vector<SharedProduct> products_;
};

}  // namespace

core::SceneOccurrenceRep* BuildScene(const ImportedModel& model)
{
    const std::vector<std::uint32_t> used = ChildrenFirst(model);
    if (used.empty())
        return nullptr;
    try {
        return Builder(model).Run(used).release();
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

}  // namespace kuvimport
