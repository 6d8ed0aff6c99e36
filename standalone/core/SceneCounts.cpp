#include "core/SceneCounts.h"

#include "core/ProductObjects.h"
#include "core/SceneReps.h"

#include <algorithm>
#include <unordered_set>
#include <vector>

namespace core {

namespace {

/// A bag on the way down.
struct Frame {
    const KUVRep* rep;
    const list<KUVRep>* children;
    int next;
};

class Counter {
public:
    SceneCounts Count(const KUVRep* root)
    {
        if (root)
            Enter(root);
        while (!frames_.empty()) {
            Frame& frame = frames_.back();
            if (const KUVRep* const child = (*frame.children)[frame.next++]) {
                Enter(child);
            } else {
                wayDown_.erase(frame.rep);
                frames_.pop_back();
            }
        }
        counts_.products = products_.size();
        counts_.geometries = geometries_.size();
        return counts_;
    }

private:
    void Enter(const KUVRep* rep)
    {
        const list<KUVRep>* const children = rep->GetChildren();
        const bool isBag = children && (*children)[0];
        if (isBag && !wayDown_.insert(rep).second)
            return;
        counts_.levels = std::max<std::uint64_t>(counts_.levels, frames_.size() + 1);
        AddOccurrence(rep);
        AddGeometry(GeometryOf(rep));
        if (isBag)
            frames_.push_back({rep, children, 0});
    }

    void AddOccurrence(const KUVRep* rep)
    {
        const KUVModelIdentificator* const identificator = rep->GetModelIdentificator();
        const auto* const occurrence =
            identificator ? dynamic_cast<const ProductOccurrence*>(identificator->GetId())
                          : nullptr;
        if (!occurrence)
            return;
        ++counts_.occurrences;
        products_.insert(&occurrence->Reference());
    }

    void AddGeometry(const PartGeometry* geometry)
    {
        if (!geometry)
            return;
        ++counts_.shapes;
        counts_.faces += static_cast<std::uint64_t>(geometry->FaceCount());
        counts_.edges += static_cast<std::uint64_t>(geometry->EdgeCount());
        counts_.vertices += static_cast<std::uint64_t>(geometry->VertexCount());
        counts_.triangles += geometry->TriangleCount();
        if (geometries_.insert(geometry).second)
            counts_.uniqueTriangles += geometry->TriangleCount();
    }

    SceneCounts counts_;
    std::vector<Frame> frames_;
    std::unordered_set<const KUVRep*> wayDown_;
    std::unordered_set<const ProductReference*> products_;
    std::unordered_set<const PartGeometry*> geometries_;
};

}  // namespace

SceneCounts CountScene(const KUVRep* root) { return Counter().Count(root); }

}  // namespace core
