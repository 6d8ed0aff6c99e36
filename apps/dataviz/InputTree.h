#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Options.h"
#include "Supervisor.h"

class VisDataTree;

namespace dataviz {

struct TreeFile;

/// What an input holds besides its tree. The counts of shapes are those of a model only.
struct InputFacts {
    struct Counts {
        std::uint64_t products = 0;
        std::uint64_t instances = 0;
        std::uint64_t reps = 0;
        std::uint64_t faces = 0;
        std::uint64_t edges = 0;
        std::uint64_t vertices = 0;
        std::uint64_t triangles = 0;
        std::uint64_t trianglesUnique = 0;
    };

    std::string format;            ///< "tree" for a tree file
    std::optional<Counts> counts;  ///< of a model
    bool isTessellated = false;    ///< false where the file brought its triangles
    double linearDeflection = 0;   ///< as used
    double angularDeflection = 0;
    double secondsRead = 0;
    double secondsMesh = 0;
    double secondsTree = 0;
};

/// The tree of an input, with the weights that its caches get once a layout has made them.
///
/// Owns the tree: everything that draws it goes first.
class InputTree {
public:
    InputTree();
    InputTree(const InputTree&) = delete;
    InputTree& operator=(const InputTree&) = delete;
    ~InputTree();

    /// Reads a file, "-" being standard input. A failure names no file: it is the input's.
    std::optional<Failure> Load(const std::string& path, const ModelOptions& options,
                                WorkChannel& channel);

    VisDataTree* Root() const { return root_; }
    /// All nodes in pre-order: the position is the number that files and outputs use.
    const std::vector<VisDataTree*>& Nodes() const { return nodes_; }
    const InputFacts& Facts() const { return facts_; }
    bool IsModel() const { return facts_.counts.has_value(); }

    /// Gives every node's cache its size and colour value. The caches are the layout's, so the
    /// layout comes first.
    void Weigh(bool wholeReps);
    /// Gives every node of a model a colour value from 0 to 7, after weighing: by its "product",
    /// its "kind" of primitive or its "share" of the whole.
    void SetColorIndices(const std::string& by);

private:
    std::optional<Failure> LoadWhole(const std::string& path, const ModelOptions& options,
                                     WorkChannel& channel);
    std::optional<Failure> LoadTreeFile(const std::string& text, bool& isGltf);
    std::optional<Failure> LoadModel(const std::string& path, const ModelOptions& options,
                                     WorkChannel& channel);
    void BuildFrom(const TreeFile& file);
    void Free(VisDataTree* root) const;
    void CollectNodes();
    std::optional<Failure> CutDownTo(const std::string& labels);

    VisDataTree* root_ = nullptr;
    std::vector<VisDataTree*> nodes_;
    std::vector<std::int64_t> sizeValues_;  // of a tree file, by node
    std::vector<std::int64_t> colorValues_;
    InputFacts facts_;
};

}  // namespace dataviz
