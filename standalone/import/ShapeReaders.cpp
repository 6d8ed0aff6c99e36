#include "import/ShapeReaders.h"

#include "import/FileContent.h"
#include "import/ShapeParts.h"
#include "import/Text.h"
#include "import/ToolkitGuard.h"
#include "import/XcafWalk.h"

#include <BRepTools.hxx>
#include <BRep_Builder.hxx>
#include <BinTools.hxx>
#include <IFSelect_ReturnStatus.hxx>
#include <IGESCAFControl_Reader.hxx>
#include <TopExp_Explorer.hxx>
#include <VrmlData_Appearance.hxx>
#include <VrmlData_Geometry.hxx>
#include <VrmlData_Group.hxx>
#include <VrmlData_Material.hxx>
#include <VrmlData_Scene.hxx>
#include <VrmlData_ShapeNode.hxx>

#include <filesystem>
#include <fstream>
#include <unordered_map>
#include <utility>

namespace kuvimport {

namespace {

LabelText PlainText(const std::string& rawName)
{
    LabelText text;
    text.name = Trimmed(ToUtf8(rawName));
    return text;
}

std::string StemOf(const std::string& path)
{
    return ToUtf8(std::filesystem::path(path).stem().string());
}

/// The last line of an IGES file has a T in its 73rd column.
bool HasIgesEnd(const std::string& path)
{
    const FileContent content(path);
    return content.TailContains("T      1") || content.TailContains("T0000001");
}

void TransferIges(IGESCAFControl_Reader& reader, const std::string& path, ImportMonitor* monitor,
                  ImportedModel& model)
{
    Handle(TDocStd_Document) document = NewXcafDocument();
    Handle(MonitorIndicator) indicator = new MonitorIndicator(monitor, ImportStage::Read, 0.2, 1.0);
    reader.Transfer(document, indicator->Start());
    FillFromDocument(document, PlainText, StemOf(path), model);
}

/// Groups, shape nodes and their sharing (USE) become products, components and sharing.
class VrmlWalk {
public:
    explicit VrmlWalk(ImportedModel& model) : model_(model) {}

    void Run(const VrmlData_Scene& scene, const std::string& name)
    {
        model_.root = NewProduct(name);
        model_.products[model_.root].isFileRoot = true;
        for (VrmlData_Scene::Iterator it = scene.GetIterator(); it.More(); it.Next())
            AddNode(it.Value(), model_.root);
        while (!pending_.empty()) {
            const auto [group, product] = pending_.back();
            pending_.pop_back();
            for (VrmlData_Group::Iterator it = group->NodeIterator(); it.More(); it.Next())
                AddNode(it.Value(), product);
        }
    }

private:
    std::uint32_t NewProduct(const std::string& name)
    {
        model_.products.emplace_back().name = name;
        return static_cast<std::uint32_t>(model_.products.size() - 1);
    }

    void AddNode(const Handle(VrmlData_Node) & node, std::uint32_t parent)
    {
        if (node.IsNull())
            return;
        Component component;
        if (const auto group = Handle(VrmlData_Group)::DownCast(node)) {
            component.placement = PlacementOf(TopLoc_Location(group->GetTransform()));
            component.product = ProductOf(node, "Group");
        } else if (Handle(VrmlData_ShapeNode)::DownCast(node)) {
            component.product = ProductOf(node, "Shape");
        } else {
            return;
        }
        component.id = std::to_string(model_.products[parent].components.size() + 1);
        model_.products[parent].components.push_back(std::move(component));
    }

    std::uint32_t ProductOf(const Handle(VrmlData_Node) & node, const char* fallback)
    {
        const auto known = products_.find(node.get());
        if (known != products_.end())
            return known->second;
        const std::string defined = node->Name() ? Trimmed(ToUtf8(node->Name())) : std::string();
        const std::uint32_t product = NewProduct(defined.empty() ? fallback : defined);
        products_.emplace(node.get(), product);
        if (const auto group = Handle(VrmlData_Group)::DownCast(node))
            pending_.emplace_back(group, product);
        else
            FillPart(Handle(VrmlData_ShapeNode)::DownCast(node), product);
        return product;
    }

    void FillPart(const Handle(VrmlData_ShapeNode) & node, std::uint32_t product)
    {
        TopoDS_Shape shape;
        if (!node->Geometry().IsNull()) {
            const Handle(TopoDS_TShape) body = node->Geometry()->TShape();
            if (!body.IsNull())
                shape.TShape(body);
        }
        model_.products[product].geometry = AddNativeShape(shape, model_);
        const Handle(VrmlData_Appearance)& appearance = node->Appearance();
        if (!appearance.IsNull() && !appearance->Material().IsNull()) {
            const Quantity_Color& diffuse = appearance->Material()->DiffuseColor();
            model_.products[product].colour = ToColour(Quantity_ColorRGBA(diffuse));
        }
    }

    ImportedModel& model_;
    std::unordered_map<const Standard_Transient*, std::uint32_t> products_;
    std::vector<std::pair<Handle(VrmlData_Group), std::uint32_t>> pending_;
};

}  // namespace

std::string ReadIges(const std::string& path, ImportMonitor* monitor, ImportedModel& model)
{
    std::string reason;
    const std::string fault = RunGuarded([&] {
        IGESCAFControl_Reader reader;
        reader.SetColorMode(Standard_True);
        reader.SetNameMode(Standard_True);
        reader.SetLayerMode(Standard_False);
        if (reader.ReadFile(path.c_str()) != IFSelect_RetDone)
            reason = "the IGES file is malformed or cut off";
        else if (!IsCancelled(monitor))
            TransferIges(reader, path, monitor, model);
    });
    if (reason.empty() && fault.empty() && model.products.empty())
        reason = "the IGES file holds no shape";
    if (reason.empty())
        reason = fault;
    // The toolkit reads on where a file ends too early, and crashes later; tell the cause.
    return reason.empty() || HasIgesEnd(path) ? reason
                                              : "the IGES file is cut off (" + reason + ")";
}

std::string ReadBrep(const std::string& path, ImportMonitor* monitor, ImportedModel& model)
{
    std::string reason;
    const std::string fault = RunGuarded([&] {
        TopoDS_Shape shape;
        Handle(MonitorIndicator) indicator = new MonitorIndicator(monitor, ImportStage::Read);
        const bool isBinary =
            FileContent(path).Head().find("Open CASCADE Topology") != std::string_view::npos;
        if (isBinary)
            BinTools::Read(shape, path.c_str(), indicator->Start());
        else
            BRepTools::Read(shape, path.c_str(), BRep_Builder(), indicator->Start());
        if (shape.IsNull()) {
            reason = "the BREP file is malformed or cut off";
            return;
        }
        Product& product = model.products.emplace_back();
        product.name = StemOf(path);
        product.geometry = AddNativeShape(shape, model);
    });
    return fault.empty() ? reason : fault;
}

std::string ReadVrml(const std::string& path, ImportMonitor* /*monitor*/, ImportedModel& model)
{
    std::string reason;
    const std::string fault = RunGuarded([&] {
        std::ifstream stream(path, std::ios::binary);
        VrmlData_Scene scene;
        scene << stream;
        VrmlWalk(model).Run(scene, StemOf(path));
        if (scene.Status() == VrmlData_StatusOK)
            return;
        reason = "the VRML file is malformed at line " + std::to_string(scene.GetLineError());
        if (!model.products[model.root].components.empty())
            model.warnings.push_back(std::exchange(reason, {}) + "; the rest was not read");
    });
    return fault.empty() ? reason : fault;
}

}  // namespace kuvimport
