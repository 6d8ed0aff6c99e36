#ifndef VisDataTreeUtility_h
#define VisDataTreeUtility_h

// Trees of the 3D scene: built from pick paths, searched with them, weighted, filtered.
//
// The data of each node of such a tree is a `KUVPickPath` of its own, whose cursor stands on the
// scene element that the node stands for. Whoever owns the tree owns these paths: releasing the
// root does not release them, `ReleaseFilteredTreeRoot` does.
//
// Paths that are handed in keep their cursor and their lock. Nothing is thrown.

#include "KUV3D.h"
#include "KUVViewer.h"
#include "VisDataTree.h"
#include "VisExport.h"

/// What a filtered copy of a tree keeps. As it is made, everything.
struct VisDataTreeFilters {
    /// Non-zero keeps leaf objects that are edges (faces, vertices) of the scene.
    unsigned char showEdges = 1;
    unsigned char showFaces = 1;
    unsigned char showVertices = 1;
    /// Above 0: keeps elements picked within this distance of the centre, scene units, and what
    /// leads to them.
    float radius = 0.0f;
    float centreX = 0.0f;
    float centreY = 0.0f;
    float centreZ = 0.0f;
    /// Keeps paths through a filter bag rep that shows an object of the class "OXMRootOccurrence"
    /// (1) or "LightVisuProductLoaderHandler" (2), and paths without reps. Other values keep all.
    unsigned int productFilter = 0;
};

class VIS_EXPORT VisDataTreeUtility {
public:
    // ---- tree from the scene

    /// A node for the element under the cursor of `path`, labelled with the alias of the model
    /// object behind it or with the kind of primitive that it designates.
    ///
    /// The node has one reference, the caller's, and holds a copy of the path. Without a path, or
    /// without a current rep, it has neither label nor icon. An element that has no name gets the
    /// label of what is not loaded, and is mergeable when `mergeableIfNotLoaded` is non-zero. Null
    /// when memory runs out.
    static VisDataTree* CreateVisDataTree(KUVPickPath* path, unsigned char mergeableIfNotLoaded);

    /// A tree of the elements that `paths` lead to, with a node for each rep on the way.
    ///
    /// The root stands for the first rep of the paths; where they begin with different reps it is
    /// an unnamed node above these. Levels and leaves are in the order in which the paths bring
    /// them; the same element again adds nothing. The root has one reference, the caller's; null
    /// when no path contributed or memory runs out. Linear in the reps of all paths. The variable
    /// "VisDataTreeSeparatePrimitive", read once a process, puts a node for the last rep above each
    /// leaf.
    ///
    /// @param paths       ends at its first absent entry
    /// @param restrictTo  only paths that contain these reps count; null or empty: all
    static VisDataTree* CreateTreeFromPickPath(const list<KUVPickPath>& paths,
                                               KUVRepPath* restrictTo,
                                               unsigned char mergeableIfNotLoaded);

    // ---- search

    /// The first node at or below `node`, parents before children, that designates the same as
    /// `path`; with `leafOnly` non-zero the first childless one. Nodes whose path parts from `path`
    /// before the shorter cursor are left out with everything below them. Null when there is none,
    /// for null arguments, for a path without current rep and when memory runs out.
    static VisDataTree* DeepSearchNodeWithPickPath(VisDataTree* node, KUVPickPath* path,
                                                   unsigned char leafOnly);

    /// The first child of `node` that designates the same element as `path`, or null. Looks at the
    /// children one after the other.
    static VisDataTree* GetChildWithPickPath(VisDataTree* node, KUVPickPath* path);

    /// Where the pointer is, y upwards from the lower edge of the viewer. Fails without a viewer
    /// and leaves the position alone.
    static KUVResult GetMousePositionInsideViewport(KUVViewer* viewer, float& x, float& y);

    // ---- statistics

    /// Counts the triangles of the subtree bottom-up and stores each node's number as the size and
    /// colour value of its cache: make the layout, whose caches these are, first.
    ///
    /// A node that designates primitives counts these. With `wholeReps` non-zero an inner node
    /// counts the whole of its rep, shown or not, instead of the sum of its children. Values are 64
    /// bits wide; the number given back stops at 4294967295. 0 for null and when memory runs out.
    static unsigned int ComputeNbTriangles(VisDataTree* node, unsigned char wholeReps);

    /// Counts the reps at and below the leaves of the subtree that are a kind of `typeName`, and
    /// stores each node's number as the colour value of its cache. Limits and failures as above.
    static unsigned int ComputeNbTypeOfRep(VisDataTree* node, const char* typeName);

    // ---- filters

    /// A copy of the subtree of `root` without what `filters` leave out, each node with a copy of
    /// its path; for a second picture, or another one, of the same scene.
    ///
    /// A node goes, with everything below it, when it has no path or is filtered out itself. With a
    /// radius an inner node stays only where a leaf below it was picked inside the sphere (on its
    /// edge counts). With `checkLeaves` non-zero it stays only where a leaf below it is not
    /// filtered out, and with both where one leaf is both.
    ///
    /// Merged levels dissolve on the way: the children of a merged child take its place, whatever
    /// the filters say of the child; one level at a time, so that a merged grandchild stays. So do
    /// merged levels with one child each at the top, as long as everything above them, also above
    /// `root`, is merged.
    ///
    /// The copy has one reference, the caller's, no caches and no parent; free it with
    /// `ReleaseFilteredTreeRoot` and `Release`. Null when the root itself goes, for null and when
    /// memory runs out. Linear in the nodes, plus the reps of the paths that the product filter
    /// rejects. The given tree is not changed.
    static VisDataTree* ApplyFilters(VisDataTree* root, const VisDataTreeFilters& filters,
                                     unsigned char checkLeaves);

    /// Gives back the pick path in the data of `root` and of every node below it, and clears the
    /// data; for every tree built from pick paths, filtered or not. The nodes stay: `Release` the
    /// root afterwards. Null is ignored.
    ///
    /// With `releaseCaches` non-zero the caches are detached and deleted as well. That is for
    /// caches that the caller made: one that a layout made stays with the layout, and is reported
    /// as a programming error, once a call.
    static void ReleaseFilteredTreeRoot(VisDataTree* root, unsigned char releaseCaches);

    // ---- from a node back to the scene

    /// Makes `result` the path that the node designates, stripped as by
    /// `VisPathUtility::StripPickPath`. Without node, or without its path, nothing happens.
    ///
    /// A node with children whose path stands on its last rep gives the path to the rep above,
    /// mapped onto the product level when `mapToProduct` is non-zero and that can be done. Every
    /// other node gives the path that ends at its cursor, and `mapToProduct` has no effect. The
    /// node's path keeps cursor and lock; `result` may be that path, and keeps its lock.
    static void StripPickPathFromNode(VisDataTree* node, KUVPickPath& result,
                                      unsigned char mapToProduct);
};

#endif
