#include "import/Tessellator.h"

#include "import/ShapeParts.h"
#include "import/Text.h"
#include "import/ToolkitGuard.h"

#include <BRepBndLib.hxx>
#include <BRepMesh_IncrementalMesh.hxx>
#include <BRep_Builder.hxx>
#include <BRep_Tool.hxx>
#include <Bnd_Box.hxx>
#include <IMeshTools_Parameters.hxx>
#include <Poly_Triangulation.hxx>
#include <Precision.hxx>
#include <TopExp.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Compound.hxx>
#include <TopoDS_Face.hxx>

#include <algorithm>
#include <numeric>
#include <thread>
#include <unordered_map>

namespace kuvimport {

namespace {

/// A chord cannot be further from its arc than the part is large; more could also overflow.
constexpr double COARSEST_DEFLECTION = 1;
/// Finer ones fill any memory with triangles that no picture can tell apart.
constexpr double FINEST_DEFLECTION = 1e-6;
constexpr double DEGREE = 3.14159265358979323846 / 180;

/// One geometry on its way to triangles. `faces` is the order of its face numbers.
struct Job {
    PartGeometry* geometry = nullptr;
    TopTools_IndexedMapOfShape faces;
    /// What is to be tessellated: the whole shape, or the faces that came without triangles. Null:
    /// nothing.
    TopoDS_Shape open;
    std::size_t openFaces = 0;
    double deflection = 0;
    std::string problem;
};

bool HasTriangles(const TopoDS_Face& face)
{
    TopLoc_Location location;
    const Handle(Poly_Triangulation)& mesh = BRep_Tool::Triangulation(face, location);
    return !mesh.IsNull() && mesh->NbTriangles() > 0;
}

bool HasSurface(const TopoDS_Face& face)
{
    TopLoc_Location location;
    return !BRep_Tool::Surface(face, location).IsNull();
}

Extent ExtentOf(const TopoDS_Shape& shape, bool useTriangles)
{
    Bnd_Box box;
    BRepBndLib::Add(shape, box, useTriangles);
    Extent extent;
    if (box.IsVoid())
        return extent;
    if (box.IsOpen()) {
        if (!box.HasFinitePart())
            return extent;
        box = box.FinitePart();
    }
    box.Get(extent.low[0], extent.low[1], extent.low[2], extent.high[0], extent.high[1],
            extent.high[2]);
    return extent;
}

double LinearDeflection(const ImportOptions& options)
{
    return std::clamp(options.linearDeflection, FINEST_DEFLECTION, COARSEST_DEFLECTION);
}

/// Sorts a geometry's faces into those that brought triangles and those that wait for some.
void Prepare(Job& job, const ImportOptions& options)
{
    const TopoDS_Shape* shape = NativeShape(*job.geometry);
    if (!shape)
        return;
    TopExp::MapShapes(*shape, TopAbs_FACE, job.faces);
    TopoDS_Compound open;
    BRep_Builder builder;
    builder.MakeCompound(open);
    std::size_t brought = 0;
    for (int i = 1; i <= job.faces.Extent(); ++i) {
        const TopoDS_Face& face = TopoDS::Face(job.faces(i));
        if (HasTriangles(face)) {
            ++brought;
        } else if (HasSurface(face)) {
            builder.Add(open, face);
            ++job.openFaces;
        }
    }
    job.geometry->broughtTriangles = brought > 0;
    if (job.openFaces == 0)
        return;
    // Faces with triangles are kept out of the mesher's sight: it would measure them against its
    // own deflection and replace those that it finds too coarse.
    job.open = brought == 0 ? *shape : TopoDS_Shape(open);
    const double size = ExtentOf(*shape, /*useTriangles=*/false).LargestSide();
    // The mesher refuses less than its precision; without a size there is nothing to mesh.
    if (size > 0)
        job.deflection = std::max(size * LinearDeflection(options), Precision::Confusion());
}

void Mesh(Job& job, const ImportOptions& options, bool parallel, const Message_ProgressRange& range)
{
    IMeshTools_Parameters parameters;
    parameters.Deflection = job.deflection;
    parameters.Angle = options.angularDeflection * DEGREE;
    parameters.Relative = Standard_False;
    parameters.InParallel = parallel;
    job.problem = RunGuarded([&] {
        if (job.deflection > 0)
            BRepMesh_IncrementalMesh(job.open, parameters, range);
    });
}

void CountParts(Job& job)
{
    const TopoDS_Shape* shape = NativeShape(*job.geometry);
    if (!shape)
        return;
    PartGeometry& geometry = *job.geometry;
    geometry.trianglesPerFace.clear();
    geometry.trianglesPerFace.reserve(static_cast<std::size_t>(job.faces.Extent()));
    for (int i = 1; i <= job.faces.Extent(); ++i) {
        TopLoc_Location location;
        const Handle(Poly_Triangulation)& mesh =
            BRep_Tool::Triangulation(TopoDS::Face(job.faces(i)), location);
        const int triangles = mesh.IsNull() ? 0 : mesh->NbTriangles();
        geometry.trianglesPerFace.push_back(static_cast<std::uint32_t>(triangles));
    }
    TopTools_IndexedMapOfShape others;
    TopExp::MapShapes(*shape, TopAbs_EDGE, others);
    geometry.edges = static_cast<std::uint32_t>(others.Extent());
    others.Clear();
    TopExp::MapShapes(*shape, TopAbs_VERTEX, others);
    geometry.vertices = static_cast<std::uint32_t>(others.Extent());
    geometry.extent = ExtentOf(*shape, /*useTriangles=*/true);
}

/// Jobs that share a face or an edge must not run at the same time: the triangles are stored in the
/// shared part. Each group is one thread's work, in the file's order.
std::vector<std::vector<Job*>> GroupsWithoutSharing(std::vector<Job>& jobs)
{
    std::vector<std::size_t> leader(jobs.size());
    std::iota(leader.begin(), leader.end(), std::size_t{0});
    const auto leaderOf = [&](std::size_t i) {
        while (leader[i] != i)
            i = leader[i] = leader[leader[i]];
        return i;
    };
    std::unordered_map<const TopoDS_TShape*, std::size_t> firstUser;
    for (std::size_t i = 0; i < jobs.size(); ++i) {
        if (jobs[i].open.IsNull())
            continue;
        TopTools_IndexedMapOfShape edges;
        TopExp::MapShapes(jobs[i].open, TopAbs_EDGE, edges);
        for (int e = 1; e <= edges.Extent(); ++e) {
            const auto [user, isNew] = firstUser.try_emplace(edges(e).TShape().get(), i);
            if (!isNew)
                leader[leaderOf(i)] = leaderOf(user->second);
        }
    }
    std::unordered_map<std::size_t, std::size_t> groupOf;
    std::vector<std::vector<Job*>> groups;
    for (std::size_t i = 0; i < jobs.size(); ++i) {
        if (jobs[i].open.IsNull())
            continue;
        const auto [group, isNew] = groupOf.try_emplace(leaderOf(i), groups.size());
        if (isNew)
            groups.emplace_back();
        groups[group->second].push_back(&jobs[i]);
    }
    return groups;
}

std::size_t FacesOf(const std::vector<Job*>& group)
{
    return std::accumulate(group.begin(), group.end(), std::size_t{0},
                           [](std::size_t sum, const Job* job) { return sum + job->openFaces; });
}

/// Runs the groups: one that outweighs a fair share of what is left is spread over all cores face
/// by face, the others are dealt out whole.
class Run {
public:
    Run(const ImportOptions& options, ImportMonitor* monitor)
        : options_(options), monitor_(monitor),
          threads_(options.threads ? options.threads
                                   : std::max(1U, std::thread::hardware_concurrency()))
    {
    }

    void Execute(std::vector<std::vector<Job*>> groups)
    {
        std::stable_sort(groups.begin(), groups.end(),
                         [](const auto& a, const auto& b) { return FacesOf(a) > FacesOf(b); });
        for (const auto& group : groups)
            total_ += FacesOf(group);
        std::size_t left = total_;
        std::size_t next = 0;
        while (threads_ > 1 && next < groups.size() && FacesOf(groups[next]) * threads_ > left) {
            left -= FacesOf(groups[next]);
            RunGroup(groups[next++], /*parallel=*/true);
        }
        DealOut(groups, next);
    }

private:
    void DealOut(const std::vector<std::vector<Job*>>& groups, std::size_t first)
    {
        std::atomic<std::size_t> next{first};
        const auto work = [&] {
            for (std::size_t i = next++; i < groups.size(); i = next++)
                RunGroup(groups[i], /*parallel=*/false);
        };
        const std::size_t helpers =
            std::min<std::size_t>(threads_, groups.size() - std::min(first, groups.size()));
        std::vector<std::thread> pool;
        for (std::size_t i = 1; i < helpers; ++i)
            pool.emplace_back(work);
        work();
        for (std::thread& thread : pool)
            thread.join();
    }

    void RunGroup(const std::vector<Job*>& group, bool parallel)
    {
        for (Job* job : group) {
            if (IsCancelled(monitor_))
                return;
            // Only the indicator of a lone job may report its share: those of jobs that run side by
            // side would contradict each other.
            Handle(MonitorIndicator) indicator =
                new MonitorIndicator(parallel ? monitor_ : nullptr, ImportStage::Tessellate,
                                     Share(done_), Share(done_ + job->openFaces));
            Handle(CancelOnly) cancelOnly = new CancelOnly(monitor_);
            Mesh(*job, options_, parallel, parallel ? indicator->Start() : cancelOnly->Start());
            done_ += job->openFaces;
            if (monitor_)
                monitor_->Progress(ImportStage::Tessellate, Share(done_));
        }
    }

    double Share(std::size_t faces) const
    {
        return total_ ? static_cast<double>(faces) / static_cast<double>(total_) : 1;
    }

    class CancelOnly : public Message_ProgressIndicator {
    public:
        explicit CancelOnly(ImportMonitor* monitor) : monitor_(monitor) {}

    protected:
        Standard_Boolean UserBreak() override { return IsCancelled(monitor_); }
        void Show(const Message_ProgressScope& /*scope*/, Standard_Boolean /*isForce*/) override {}

    private:
        ImportMonitor* monitor_;
    };

    const ImportOptions& options_;
    ImportMonitor* monitor_;
    unsigned threads_;
    std::size_t total_ = 0;
    std::atomic<std::size_t> done_{0};
};

/// Names a geometry by the first product that uses it.
std::string OwnerOf(const ImportedModel& model, std::size_t geometry)
{
    for (const Product& product : model.products) {
        if (product.geometry == geometry)
            return Quoted(product.name);
    }
    return "a part";
}

void Report(const std::vector<Job>& jobs, ImportedModel& model)
{
    for (std::size_t i = 0; i < jobs.size(); ++i) {
        const Job& job = jobs[i];
        if (job.open.IsNull())
            continue;
        std::size_t bare = 0;
        for (const std::uint32_t triangles : job.geometry->trianglesPerFace)
            bare += triangles == 0 ? 1 : 0;
        if (bare == 0)
            continue;
        model.warnings.push_back(OwnerOf(model, i) + ": " + std::to_string(bare) + " of " +
                                 std::to_string(job.geometry->trianglesPerFace.size()) +
                                 " faces could not be tessellated" +
                                 (job.problem.empty() ? std::string{} : " (" + job.problem + ")"));
    }
}

}  // namespace

bool TessellateParts(ImportedModel& model, const ImportOptions& options, ImportMonitor* monitor)
{
    std::vector<Job> jobs(model.geometries.size());
    bool anyOpen = false;
    for (std::size_t i = 0; i < jobs.size(); ++i) {
        if (IsCancelled(monitor))
            return false;
        jobs[i].geometry = &model.geometries[i];
        jobs[i].problem = RunGuarded([&] { Prepare(jobs[i], options); });
        anyOpen = anyOpen || !jobs[i].open.IsNull();
    }
    if (anyOpen) {
        Run(options, monitor).Execute(GroupsWithoutSharing(jobs));
        model.tessellation = Tessellation{LinearDeflection(options), options.angularDeflection};
    }
    if (IsCancelled(monitor))
        return false;
    for (Job& job : jobs) {
        const std::string problem = RunGuarded([&] { CountParts(job); });
        if (job.problem.empty())
            job.problem = problem;
    }
    Report(jobs, model);
    return true;
}

}  // namespace kuvimport
