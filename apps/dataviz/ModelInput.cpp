// Models: from the file through the scene and its pick paths to the tree.

#include <chrono>
#include <map>
#include <memory>
#include <string>

#include "InputTree.h"

#include "KUV3D.h"
#include "VisDataTree.h"
#include "VisDataTreeUtility.h"
#include "VisPathUtility.h"
#include "core/ReleaseSceneTree.h"
#include "core/SceneReps.h"
#include "core/SceneViewpoint.h"
#include "import/ModelImport.h"
#include "import/SceneBuilder.h"

namespace dataviz {

namespace {

using Clock = std::chrono::steady_clock;

struct ReleaseObject {
    void operator()(KUVBaseUnknown* object) const { object->Release(); }
};

/// Hands the importer's progress on, in whole percents: it is told far more often.
class ImportProgress : public kuvimport::ImportMonitor {
public:
    explicit ImportProgress(WorkChannel& channel) : channel_(channel) {}

    void Progress(kuvimport::ImportStage stage, double fraction) override
    {
        const bool isReading = stage == kuvimport::ImportStage::Read;
        const int step = (isReading ? 0 : 1000) + static_cast<int>(fraction * 100);
        if (last_.exchange(step) != step)
            channel_.Progress(isReading ? "reading" : "meshing", fraction);
    }

private:
    WorkChannel& channel_;
    std::atomic<int> last_{-1};
};

double QualityFactor(const std::string& quality)
{
    static const std::map<std::string, double> FACTORS{
        {"very-coarse", 4}, {"coarse", 2}, {"normal", 1}, {"fine", 0.5}, {"very-fine", 0.25}};
    const auto found = FACTORS.find(quality);
    return found == FACTORS.end() ? 1 : found->second;
}

InputFacts FactsOf(const kuvimport::ImportedModel& model)
{
    const kuvimport::ModelCounts counts = model.Count();
    InputFacts facts;
    facts.format = model.format;
    facts.counts = InputFacts::Counts{counts.products,  counts.instances,      counts.reps,
                                      counts.faces,     counts.edges,          counts.vertices,
                                      counts.triangles, counts.trianglesUnique};
    facts.isTessellated = model.tessellation.has_value();
    if (model.tessellation) {
        facts.linearDeflection = model.tessellation->linearDeflection;
        facts.angularDeflection = model.tessellation->angularDeflection;
    }
    facts.secondsRead = model.secondsRead;
    facts.secondsMesh = model.secondsMesh;
    return facts;
}

/// The rep at the end of a path, wherever its cursor stands.
KUVRep* LeafOf(const KUVPickPath& path) { return path[path.Size() - 1]; }

/// One path for each face of each leaf; a leaf without faces keeps its own.
std::vector<KUVPickPath> PathsOfFaces(const std::vector<KUVPickPath>& leaves)
{
    std::vector<KUVPickPath> paths;
    for (const KUVPickPath& leaf : leaves) {
        const core::PartGeometry* const geometry = core::GeometryOf(LeafOf(leaf));
        const int count = geometry != nullptr ? geometry->FaceCount() : 0;
        if (count == 0)
            paths.push_back(leaf);
        for (int i = 0; i < count; ++i) {
            paths.push_back(leaf);
            paths.back().Load({geometry->FirstFace() + i});
        }
    }
    return paths;
}

VisDataTree* TreeOf(KUVRep* rootOccurrence, bool withFaces)
{
    const std::unique_ptr<core::SceneViewpoint, ReleaseObject> viewpoint(
        core::SceneViewpoint::CreateForDocument(rootOccurrence));
    if (!viewpoint)
        throw std::bad_alloc();
    std::vector<KUVPickPath> paths = VisPathUtility::GenerateAllKUVPickPath(
        *viewpoint, /*skipAttribute8=*/0, /*skipAttribute1=*/0);
    if (withFaces)
        paths = PathsOfFaces(paths);
    list<KUVPickPath> pointers;
    for (KUVPickPath& path : paths)
        pointers.Append(&path);
    return VisDataTreeUtility::CreateTreeFromPickPath(pointers, /*restrictTo=*/nullptr,
                                                      /*mergeableIfNotLoaded=*/0);
}

}  // namespace

std::optional<Failure> InputTree::LoadModel(const std::string& path, const ModelOptions& options,
                                            WorkChannel& channel)
{
    const double factor = QualityFactor(options.meshQuality);
    kuvimport::ImportOptions wanted;
    wanted.linearDeflection = options.linearDeflection * factor;
    wanted.angularDeflection = options.angularDeflection * factor;
    ImportProgress monitor(channel);
    kuvimport::ImportResult result = kuvimport::ImportModel(path, wanted, &monitor);
    if (!result.model)
        return Failure{{}, result.error.empty() ? "cannot be read" : result.error};
    for (const std::string& warning : result.model->warnings)
        channel.Warn(warning);
    facts_ = FactsOf(*result.model);
    channel.InputIsRead();
    channel.Progress("building the tree", -1);
    const Clock::time_point start = Clock::now();
    const std::unique_ptr<KUVRep, ReleaseObject> scene(kuvimport::BuildScene(*result.model));
    if (!scene)
        throw std::bad_alloc();
    root_ = TreeOf(scene.get(), options.primitives);
    if (root_ == nullptr)
        return Failure{{}, "holds nothing to show"};
    CollectNodes();
    facts_.secondsTree = std::chrono::duration<double>(Clock::now() - start).count();
    return std::nullopt;
}

void InputTree::Weigh(bool wholeReps)
{
    if (IsModel()) {
        VisDataTreeUtility::ComputeNbTriangles(root_, wholeReps ? 1 : 0);
        return;
    }
    for (std::size_t i = 0; i < nodes_.size(); ++i) {
        nodes_[i]->GetCache()->SetSizeValue(sizeValues_[i]);
        nodes_[i]->GetCache()->SetColorValue(colorValues_[i]);
    }
}

void InputTree::Free(VisDataTree* root) const
{
    if (IsModel())
        core::ReleaseSceneTree(root);
    else
        root->Release();
}

InputTree::~InputTree()
{
    if (root_ != nullptr)
        Free(root_);
}

}  // namespace dataviz
