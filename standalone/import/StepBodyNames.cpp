#include "import/StepBodyNames.h"

#include "import/Text.h"

#include <StepBasic_Product.hxx>
#include <StepBasic_ProductDefinition.hxx>
#include <StepBasic_ProductDefinitionFormation.hxx>
#include <StepRepr_CharacterizedDefinition.hxx>
#include <StepRepr_ProductDefinitionShape.hxx>
#include <StepRepr_PropertyDefinition.hxx>
#include <StepRepr_Representation.hxx>
#include <StepRepr_RepresentationItem.hxx>
#include <StepRepr_RepresentedDefinition.hxx>
#include <StepRepr_ShapeRepresentationRelationship.hxx>
#include <StepShape_ShapeDefinitionRepresentation.hxx>
#include <StepShape_ShellBasedSurfaceModel.hxx>
#include <StepShape_SolidModel.hxx>
#include <TCollection_HAsciiString.hxx>

#include <utility>
#include <vector>

namespace kuvimport {

namespace {

using Links = std::unordered_multimap<const Standard_Transient*, Handle(StepRepr_Representation)>;

/// Representations that stand for the same shape; those that place one in another do not.
Links EqualRepresentations(const Handle(StepData_StepModel) & entities)
{
    Links links;
    for (int i = 1; i <= entities->NbEntities(); ++i) {
        const Handle(Standard_Transient)& entity = entities->Value(i);
        if (entity->DynamicType() != STANDARD_TYPE(StepRepr_ShapeRepresentationRelationship))
            continue;
        const auto link = Handle(StepRepr_ShapeRepresentationRelationship)::DownCast(entity);
        links.emplace(link->Rep1().get(), link->Rep2());
        links.emplace(link->Rep2().get(), link->Rep1());
    }
    return links;
}

Handle(StepBasic_Product) ProductOf(const Handle(StepShape_ShapeDefinitionRepresentation) & shape)
{
    const Handle(StepRepr_PropertyDefinition) property = shape->Definition().PropertyDefinition();
    if (property.IsNull() || !property->IsKind(STANDARD_TYPE(StepRepr_ProductDefinitionShape)))
        return {};
    const Handle(StepBasic_ProductDefinition) definition =
        property->Definition().ProductDefinition();
    if (definition.IsNull() || definition->Formation().IsNull())
        return {};
    return definition->Formation()->OfProduct();
}

/// The names of all bodies of a representation, the empty ones, too.
void AddBodies(const Handle(StepRepr_Representation) & representation,
               std::vector<std::string>& names)
{
    if (representation.IsNull() || representation->Items().IsNull())
        return;
    for (int i = 1; i <= representation->NbItems(); ++i) {
        const Handle(StepRepr_RepresentationItem) item = representation->ItemsValue(i);
        if (item.IsNull() || (!item->IsKind(STANDARD_TYPE(StepShape_SolidModel)) &&
                              !item->IsKind(STANDARD_TYPE(StepShape_ShellBasedSurfaceModel))))
            continue;
        std::string name =
            item->Name().IsNull() ? std::string() : Trimmed(ToUtf8(item->Name()->ToCString()));
        // What some exporters write for no name.
        names.push_back(name == "NONE" ? std::string() : std::move(name));
    }
}

}  // namespace

std::unordered_map<int, std::string> BodyNames(const Handle(StepData_StepModel) & entities)
{
    const Links links = EqualRepresentations(entities);
    std::unordered_map<int, std::vector<std::string>> bodies;
    for (int i = 1; i <= entities->NbEntities(); ++i) {
        const auto shape =
            Handle(StepShape_ShapeDefinitionRepresentation)::DownCast(entities->Value(i));
        if (shape.IsNull())
            continue;
        const Handle(StepBasic_Product) product = ProductOf(shape);
        if (product.IsNull())
            continue;
        std::vector<std::string>& names = bodies[entities->Number(product)];
        AddBodies(shape->UsedRepresentation(), names);
        const auto [first, last] = links.equal_range(shape->UsedRepresentation().get());
        for (auto link = first; link != last; ++link)
            AddBodies(link->second, names);
    }
    std::unordered_map<int, std::string> result;
    for (auto& [product, names] : bodies) {
        if (names.size() == 1 && !names[0].empty())
            result.emplace(product, std::move(names[0]));
    }
    return result;
}

}  // namespace kuvimport
