#include "import/XcafWalk.h"

#include "import/ShapeParts.h"
#include "import/Text.h"

#include <Quantity_ColorRGBA.hxx>
#include <TCollection_AsciiString.hxx>
#include <TDF_LabelMapHasher.hxx>
#include <TDF_LabelSequence.hxx>
#include <TDataStd_Name.hxx>
#include <TopExp.hxx>
#include <TopExp_Explorer.hxx>
#include <TopLoc_Location.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopoDS_Shape.hxx>
#include <XCAFApp_Application.hxx>
#include <XCAFDoc_ColorTool.hxx>
#include <XCAFDoc_DocumentTool.hxx>
#include <XCAFDoc_ShapeTool.hxx>

#include <NCollection_DataMap.hxx>

namespace kuvimport {

namespace {

using LabelIndex = NCollection_DataMap<TDF_Label, std::uint32_t, TDF_LabelMapHasher>;

std::string RawName(const TDF_Label& label)
{
    Handle(TDataStd_Name) attribute;
    if (!label.FindAttribute(TDataStd_Name::GetID(), attribute))
        return {};
    const TCollection_ExtendedString& text = attribute->Get();
    std::string utf8(static_cast<std::size_t>(text.LengthOfCString()), '\0');
    if (utf8.empty())
        return {};
    // The toolkit writes a terminating zero behind the text, into the string's own terminator.
    Standard_PCharacter buffer = utf8.data();
    text.ToUTF8CString(buffer);
    return utf8;
}

class DocumentWalk {
public:
    DocumentWalk(const Handle(TDocStd_Document) & document, const LabelResolver& resolve,
                 ImportedModel& model)
        : shapes_(XCAFDoc_DocumentTool::ShapeTool(document->Main())),
          colours_(XCAFDoc_DocumentTool::ColorTool(document->Main())), resolve_(resolve),
          model_(model)
    {
    }

    void Run(const std::string& fileRootName)
    {
        TDF_LabelSequence roots;
        shapes_->GetFreeShapes(roots);
        if (roots.IsEmpty())
            return;
        if (roots.Length() == 1) {
            model_.root = ProductOf(roots.First());
        } else {
            model_.root = NewProduct();
            model_.products[model_.root].name = fileRootName;
            model_.products[model_.root].isFileRoot = true;
            for (const TDF_Label& root : roots)
                AddFreeShape(root);
        }
        while (!pending_.empty()) {
            const TDF_Label label = pending_.back();
            pending_.pop_back();
            Fill(label);
        }
    }

private:
    std::uint32_t NewProduct()
    {
        model_.products.emplace_back();
        return static_cast<std::uint32_t>(model_.products.size() - 1);
    }

    /// The product of a definition label, made when it is met for the first time.
    std::uint32_t ProductOf(const TDF_Label& label)
    {
        if (const std::uint32_t* known = products_.Seek(label))
            return *known;
        const std::uint32_t index = NewProduct();
        products_.Bind(label, index);
        pending_.push_back(label);
        return index;
    }

    void AddFreeShape(const TDF_Label& label)
    {
        Component component;
        component.product = ProductOf(label);
        component.id = std::to_string(model_.products[model_.root].components.size() + 1);
        model_.products[model_.root].components.push_back(std::move(component));
    }

    void Fill(const TDF_Label& label)
    {
        const std::uint32_t index = products_.Find(label);
        LabelText text = Resolve(label);
        const std::optional<Colour> colour = ColourOf(label);
        std::vector<Component> components;
        std::uint32_t geometry = NO_GEOMETRY;
        if (shapes_->IsAssembly(label))
            components = ComponentsOf(label);
        else
            geometry = AddGeometry(label);

        Product& product = model_.products[index];
        product.name = std::move(text.name);
        product.id = std::move(text.id);
        product.shapeName = std::move(text.shapeName);
        product.colour = colour;
        product.components = std::move(components);
        product.geometry = geometry;
    }

    std::vector<Component> ComponentsOf(const TDF_Label& label)
    {
        TDF_LabelSequence labels;
        shapes_->GetComponents(label, labels);
        std::vector<Component> components;
        components.reserve(static_cast<std::size_t>(labels.Length()));
        for (const TDF_Label& occurrence : labels) {
            TDF_Label definition;
            if (!shapes_->GetReferredShape(occurrence, definition))
                continue;
            Component component;
            component.product = ProductOf(definition);
            LabelText text = Resolve(occurrence);
            component.name = std::move(text.name);
            component.id = text.id.empty() ? std::to_string(components.size() + 1) : text.id;
            component.placement = PlacementOf(shapes_->GetLocation(occurrence));
            component.colour = ColourOf(occurrence);
            components.push_back(std::move(component));
        }
        return components;
    }

    LabelText Resolve(const TDF_Label& label) const
    {
        const std::string raw = RawName(label);
        LabelText text = resolve_(raw);
        if (IsReaderPlaceholder(text.name))
            text.name.clear();
        return text;
    }

    std::uint32_t AddGeometry(const TDF_Label& label)
    {
        const TopoDS_Shape shape = shapes_->GetShape(label);
        const std::uint32_t index = AddNativeShape(shape, model_);
        if (!shape.IsNull())
            AddFaceColours(label, shape, model_.geometries[index]);
        return index;
    }

    void AddFaceColours(const TDF_Label& label, const TopoDS_Shape& shape, PartGeometry& geometry)
    {
        TDF_LabelSequence subShapes;
        shapes_->GetSubShapes(label, subShapes);
        TopTools_IndexedMapOfShape faces;
        for (const TDF_Label& sub : subShapes) {
            const std::optional<Colour> colour = ColourOf(sub);
            if (!colour)
                continue;
            if (faces.IsEmpty()) {
                TopExp::MapShapes(shape, TopAbs_FACE, faces);
                geometry.faceColours.assign(static_cast<std::size_t>(faces.Extent()), 0);
            }
            for (TopExp_Explorer it(shapes_->GetShape(sub), TopAbs_FACE); it.More(); it.Next()) {
                const int number = faces.FindIndex(it.Current());
                if (number > 0)
                    geometry.faceColours[static_cast<std::size_t>(number) - 1] = *colour;
            }
        }
    }

    std::optional<Colour> ColourOf(const TDF_Label& label) const
    {
        Quantity_ColorRGBA rgba;
        for (const XCAFDoc_ColorType type : {XCAFDoc_ColorSurf, XCAFDoc_ColorGen}) {
            if (colours_->GetColor(label, type, rgba))
                return ToColour(rgba);
        }
        return std::nullopt;
    }

    Handle(XCAFDoc_ShapeTool) shapes_;
    Handle(XCAFDoc_ColorTool) colours_;
    const LabelResolver& resolve_;
    ImportedModel& model_;
    LabelIndex products_;
    std::vector<TDF_Label> pending_;
};

}  // namespace

Handle(TDocStd_Document) NewXcafDocument()
{
    XCAFDoc_ShapeTool::SetAutoNaming(Standard_False);
    Handle(TDocStd_Document) document;
    XCAFApp_Application::GetApplication()->NewDocument("BinXCAF", document);
    return document;
}

void FillFromDocument(const Handle(TDocStd_Document) & document, const LabelResolver& resolve,
                      const std::string& fileRootName, ImportedModel& model)
{
    DocumentWalk(document, resolve, model).Run(fileRootName);
}

}  // namespace kuvimport
