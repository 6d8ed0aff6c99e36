#ifndef VisDataTreeUtility_h
#define VisDataTreeUtility_h

// Trees of the 3D scene: built from pick paths, searched with them, weighted.
//
// The data of each node of such a tree is a `KUVPickPath` of its own, whose cursor stands on the
// scene element that the node stands for. Whoever owns the tree owns these paths: releasing the
// root does not release them.
//
// Paths that are handed in keep their cursor and their lock. Nothing is thrown.

#include "KUV3D.h"
#include "KUVViewer.h"
#include "VisDataTree.h"
#include "VisExport.h"

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
};

#endif
