#include "import/ModelImport.h"

#include "import/FileContent.h"
#include "import/MeshReader.h"
#include "import/ShapeReaders.h"
#include "import/StepReader.h"
#include "import/StructureLimits.h"
#include "import/Tessellator.h"
#include "import/Text.h"
#include "import/ToolkitGuard.h"

#include <filesystem>
#include <unordered_set>

namespace kuvimport {

namespace {

std::string Read(ModelFormat format, const std::string& path, const ImportOptions& options,
                 ImportMonitor* monitor, ImportedModel& model)
{
    switch (format) {
    case ModelFormat::Step:
        return ReadStep(path, options, monitor, model);
    case ModelFormat::Iges:
        return ReadIges(path, monitor, model);
    case ModelFormat::Brep:
        return ReadBrep(path, monitor, model);
    case ModelFormat::Vrml:
        return ReadVrml(path, monitor, model);
    case ModelFormat::Gltf:
    case ModelFormat::Glb:
        return ReadGltf(path, format, options, monitor, model);
    case ModelFormat::Unknown:
        return "the format is not known";
    default:
        return ReadMesh(path, format, monitor, model);
    }
}

/// Gives every product and the root something to show: a file can leave all names out.
void CompleteNames(const std::string& path, ImportedModel& model)
{
    Product& root = model.products[model.root];
    if (root.name.empty())
        root.name = ToUtf8(std::filesystem::path(path).stem().string());
    for (Product& product : model.products) {
        if (product.name.empty())
            product.name = product.id;
        if (product.name.empty())
            product.name = product.IsAssembly() ? "Assembly" : "Shape";
    }
}

/// Identifiers tell the components of one assembly apart, whatever the file gave them.
void MakeIdsUnique(ImportedModel& model)
{
    for (Product& product : model.products) {
        std::unordered_set<std::string> taken;
        for (std::size_t i = 0; i < product.components.size(); ++i) {
            std::string& id = product.components[i].id;
            if (id.empty())
                id = std::to_string(i + 1);
            const std::string stated = id;
            for (std::size_t again = 2; !taken.insert(id).second; ++again)
                id = stated + '~' + std::to_string(again);
        }
    }
}

/// Whether the model is worth showing; what has a structure but no triangles is, with a warning.
std::string JudgeUse(ImportedModel& model)
{
    const ModelCounts counts = model.Count();
    if (counts.instances == 0 && counts.reps == 0)
        return "the file holds nothing to show";
    if (counts.triangles == 0 && counts.faces > 0 && model.tessellation)
        return "no face of the file could be tessellated";
    if (counts.triangles == 0)
        model.warnings.push_back("no shape of the file has a face with triangles");
    return {};
}

}  // namespace

void ImportMonitor::Progress(ImportStage /*stage*/, double /*fraction*/) {}

bool ImportMonitor::IsCancelled() { return false; }

ImportResult ImportModel(const std::string& path, const ImportOptions& options,
                         ImportMonitor* monitor)
{
    ImportResult result;
    const FileContent content(path);
    result.error = content.Problem();
    if (result.error.empty() && content.Size() == 0)
        result.error = "the file is empty";
    if (!result.error.empty())
        return result;

    const ToolkitSession session;
    // References between files are resolved against this path, whatever the toolkit makes of a
    // relative one.
    const std::string place = std::filesystem::absolute(path).lexically_normal().string();
    auto model = std::make_unique<ImportedModel>();
    model->format = NameOf(content.Format());
    if (content.ExtensionMisleads())
        model->warnings.push_back("the content is read as " + model->format +
                                  ", which is not what the extension says");
    const Stopwatch reading;
    result.error = Read(content.Format(), place, options, monitor, *model);
    if (result.error.empty() && !IsCancelled(monitor)) {
        result.error = model->products.empty() ? "the file holds nothing to show"
                                               : JudgeExpansion(*model, options);
    }
    model->secondsRead = reading.Seconds();
    if (result.error.empty() && !IsCancelled(monitor)) {
        CompleteNames(place, *model);
        MakeIdsUnique(*model);
        const Stopwatch meshing;
        TessellateParts(*model, options, monitor);
        model->secondsMesh = meshing.Seconds();
    }
    if (IsCancelled(monitor)) {
        result.cancelled = true;
        result.error.clear();
        return result;
    }
    if (result.error.empty())
        result.error = JudgeUse(*model);
    if (result.error.empty())
        result.model = std::move(model);
    return result;
}

}  // namespace kuvimport
