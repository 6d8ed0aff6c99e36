#ifndef VisPathUtility_h
#define VisPathUtility_h

// Services over the paths of the 3D scene.
//
// Nothing is kept between calls and nothing is thrown. Paths keep the lock state in which they are
// handed over, and those that are only read keep their cursor.
//
// A product identifier is the text by which a product object is known wherever it is open. Lists of
// them begin with the outermost level. By such a list a path goes from one scene to another that
// shows the same product.

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

    // ---- product identifiers (0 for success, `KUV_FAIL` for every failure, also of memory)

    /// Appends the identifiers of a product object to `ids`: its own when it is a component, those
    /// of its instance and of its product when it is an occurrence. Identifiers that mean nothing
    /// outside this process are left out; without any the call fails. Null fails.
    static KUVResult AddProductID(std::vector<KUVUnicodeString>& ids, KUVBaseUnknown* object);

    /// Appends the identifiers of the products that loaders show under the reps of `path`, whatever
    /// its cursor, to `ids`. Fails without any, and without a viewer that has loaders.
    static KUVResult GetProductIDFromProductLight(KUVViewer* viewer, KUVPickPath& path,
                                                  std::vector<KUVUnicodeString>& ids);

    /// Makes `result` the path to the product with these identifiers; its viewpoint and what was
    /// picked with it stay. Fails when there is none, and for null.
    ///
    /// With `useLoaders` zero the scene of the main viewpoint of `viewpoint`'s viewer is searched
    /// in depth-first order for reps whose model objects have these identifiers. The first rep that
    /// goes on with the list commits the search to what is below it: a later sibling is not tried,
    /// even where it alone would match in full. The cursor then stands before the first rep; on
    /// failure the result is untouched. Linear in the reps of the scene.
    ///
    /// With `useLoaders` non-zero the result is emptied, and the first of the viewer's loaders that
    /// knows the list gives the reps, which are searched in the scene of `viewpoint`, each below
    /// the one before; levels that the loader left out are filled in. The root rep never is part of
    /// the result, nor found. The cursor stands on the last rep. A scene whose root is no bag, and
    /// a loader that gives no reps, succeed with an empty result; on failure it may be partly
    /// filled. Linear in the reps of the scene.
    static KUVResult GenerateRepPathFromProductIDs(const std::vector<KUVUnicodeString>& ids,
                                                   KUV3DViewpoint* viewpoint, KUVPickPath* result,
                                                   unsigned char useLoaders);

    /// Makes `result` the path, as the loaders of the source's viewer show it, to the product under
    /// the cursor of `source`: identifiers are collected from the first rep before the cursor whose
    /// model object is of the class "OXMRootOccurrence", down to the cursor. Fails where there is
    /// none, where a model object on the way has no identifier, and for a source without 3D
    /// viewpoint or viewer; `result` is empty then or partly filled. Both may be the same path.
    static KUVResult GetCorrespondingPathFromProductLight(KUVPickPath& source, KUVPickPath* result);

    // ---- stripping

    /// Makes `result` a copy of `source` that ends at its cursor: the reps behind it go, and with
    /// them the sub-elements. A path whose cursor is before its first rep, on its last one or
    /// behind it is copied as it is. Null does nothing. Both may be the same path.
    ///
    /// With `mapToProduct` non-zero the result then becomes the path to the product that the
    /// loaders of its viewer show under it, in the scene of that viewer, where that can be found;
    /// `isMapped`, unless null, tells whether it was. It is not touched with `mapToProduct` zero.
    static void StripPickPath(KUVPickPath* source, KUVPickPath& result, unsigned char mapToProduct,
                              unsigned char* isMapped);
};

#endif
