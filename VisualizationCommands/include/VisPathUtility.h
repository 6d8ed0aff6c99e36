#ifndef VisPathUtility_h
#define VisPathUtility_h

// Services over the paths of the 3D scene.
//
// Nothing is kept between calls and nothing is thrown. Paths keep the lock state and the cursor in
// which they are handed over.

#include "KUV3D.h"
#include "KUVViewer.h"
#include "VisExport.h"

#include <vector>

class VIS_EXPORT VisPathUtility {
public:
    /// What a path designates in its last rep.
    enum VisPath_Type : int {
        /// The path names no primitive: it is empty, its cursor is not on its last rep, or it has
        /// no sub-elements.
        VisPath_NoPrimitive = 0,
        VisPath_Vertex = 1,
        /// Keeps the numbers of the others; no path is of this type.
        VisPath_Reserved = 2,
        /// An edge, a line, a reference plane, an arrow, a polygon of the screen or a leader.
        VisPath_Edge = 3,
        /// A face, or whatever a primitive group keeps under a number.
        VisPath_Face = 4,
        /// No path, or sub-elements that are none of these.
        VisPath_Unknown = 5
    };

    /// The type of the first sub-element that has one. Null gives `VisPath_Unknown`.
    ///
    /// Writes a line to standard output for every primitive of an unknown class that it passes, and
    /// one whenever it classifies what a primitive group keeps.
    static VisPath_Type GetPickPathType(KUVPickPath* path);

    /// 1 when a filter bag rep of the path, whatever its cursor, shows a model object whose class
    /// is called `className`, letter for letter; derived classes do not count. Null gives 0.
    static unsigned char CheckIfPickPathContains(KUVPickPath* path, const char* className);

    /// Whether two paths designate the same.
    ///
    /// 1 they do; 0 they part before the shorter cursor; -1 every other difference, and one of them
    /// null. A path designates the same as itself, even null. With `ignorePrefix` non-zero the reps
    /// before the cursors are not compared, and 0 is never given.
    ///
    /// The order of the arguments matters: only where the first path's cursor is on its last rep,
    /// and both are of the same size, do the sub-elements decide; else the cursor positions do.
    static int ComparePath(KUVPickPath* first, KUVPickPath* second, unsigned char ignorePrefix);

    /// The paths to all leaves of the viewpoint's scene that take part in display, in depth-first
    /// order, cursors before the first rep. The root rep is not part of the paths: a scene that is
    /// a leaf itself gives one path without reps.
    ///
    /// Filtered reps are left out with everything below them; so are, with the flag set, those
    /// whose first word of graphic attributes has bit value 8 (1), and a rep that hangs below
    /// itself. Linear in the reps of the scene plus those of the paths. Empty when memory runs out.
    static std::vector<KUVPickPath> GenerateAllKUVPickPath(KUV3DViewpoint& viewpoint,
                                                           unsigned char skipAttribute8,
                                                           unsigned char skipAttribute1);
};

#endif
