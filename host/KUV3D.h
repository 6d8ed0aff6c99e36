#ifndef KUV3D_h
#define KUV3D_h

// The 3D scene: bags, primitives, statistics, rep paths and pick paths.

#include "KUVExport.h"
#include "KUVRep.h"
#include "KUVStringsMath.h"
#include "KUVViewer.h"

#include <cstdint>
#include <utility>
#include <vector>

// ---- reps

/// A group of 3D reps.
class KUV_EXPORT KUV3DBagRep : public KUVRep {
    KUV_DECLARE_CLASS
public:
    static KUV3DBagRep* CreateRep();
    ~KUV3DBagRep() override;

    /// Appends `rep` and takes a reference. Null is ignored; a rep that is already a child stays
    /// where it is.
    void AddChild(KUVRep* rep);
    /// Takes `rep` out and gives its reference back. Harmless when it is not a child; does not cost
    /// the number of children.
    void RemoveChild(KUVRep* rep);
    const list<KUVRep>* GetChildren() const override;

protected:
    KUV3DBagRep();

private:
    KUVChildReps children_;
};

/// A group that stands for one element of the model's structure, and can be filtered by it.
class KUV_EXPORT KUV3DFilterBagRep : public KUV3DBagRep {
    KUV_DECLARE_CLASS
public:
    static KUV3DFilterBagRep* CreateRep();
    ~KUV3DFilterBagRep() override;

protected:
    KUV3DFilterBagRep();
};

/// A primitive kept by a `VisPrimitiveGroupRep`.
class KUV_EXPORT VisPrimitive : public KUVBaseUnknown {
    KUV_DECLARE_CLASS
public:
    explicit VisPrimitive(int typeCode);
    ~VisPrimitive() override;
    int GetTypeCode() const { return typeCode_; }

private:
    int typeCode_;
};

/// A leaf whose primitives are kept outside the scene graph's own primitive classes.
class KUV_EXPORT VisPrimitiveGroupRep : public KUVRep {
    KUV_DECLARE_CLASS
public:
    static VisPrimitiveGroupRep* CreateRep();
    ~VisPrimitiveGroupRep() override;

    /// The primitive stored under a sub-element number, or null. Borrowed.
    VisPrimitive* GetVisPrimitive(int number) const;
    /// Stores `primitive` under `number` and takes a reference; null takes the number away.
    void SetVisPrimitive(int number, VisPrimitive* primitive);

private:
    VisPrimitiveGroupRep();

    std::vector<std::pair<int, VisPrimitive*>> primitives_;
};

// ---- graphic primitives

/// What a leaf rep draws under one sub-element number. Shared by the instances of a part.
class KUV_EXPORT KUVGraphicPrimitive : public KUVBaseUnknown {
    KUV_DECLARE_CLASS
public:
    ~KUVGraphicPrimitive() override;

protected:
    KUVGraphicPrimitive();
};

/// The triangles of a primitive: plain ones by number, strips and fans by the number of vertices of
/// each. The lists are borrowed from the primitive and may be null.
struct KUVTriangleData {
    int triangleCount = 0;
    int stripCount = 0;
    const int* stripVertexCounts = nullptr;
    int fanCount = 0;
    const int* fanVertexCounts = nullptr;
};

/// A primitive made of triangles.
class KUV_EXPORT KUV3DBoundingGP : public KUVGraphicPrimitive {
    KUV_DECLARE_CLASS
public:
    /// `triangleCount` plain triangles and no strips or fans.
    explicit KUV3DBoundingGP(int triangleCount);
    KUV3DBoundingGP(int triangleCount, std::vector<int> stripVertexCounts,
                    std::vector<int> fanVertexCounts);
    ~KUV3DBoundingGP() override;

    /// Overwrites `data`.
    virtual void GetTriangleData(KUVTriangleData& data) const;

private:
    int triangleCount_;
    std::vector<int> stripVertexCounts_;
    std::vector<int> fanVertexCounts_;
};

/// A face.
class KUV_EXPORT KUV3DFaceGP : public KUV3DBoundingGP {
    KUV_DECLARE_CLASS
public:
    using KUV3DBoundingGP::KUV3DBoundingGP;
    ~KUV3DFaceGP() override;
};

/// Declares a primitive class that carries no data for modules.
#define KUV_DECLARE_PRIMITIVE(NAME)                                                                \
    class KUV_EXPORT NAME : public KUVGraphicPrimitive {                                           \
        KUV_DECLARE_CLASS                                                                          \
    public:                                                                                        \
        NAME();                                                                                    \
        ~NAME() override;                                                                          \
    };

/// An edge of a shape.
KUV_DECLARE_PRIMITIVE(KUV3DEdgeGP)
/// A free line.
KUV_DECLARE_PRIMITIVE(KUV3DLineGP)
/// A reference plane.
KUV_DECLARE_PRIMITIVE(KUV3DReferencePlaneGP)
/// An arrow of fixed size.
KUV_DECLARE_PRIMITIVE(KUV3DFixedArrowGP)
/// A polygon in the plane of the screen.
KUV_DECLARE_PRIMITIVE(KUV2DPolygonGP)
/// The leader of an annotation.
KUV_DECLARE_PRIMITIVE(Vis3DDynamicLeaderGP)
/// A marker: a vertex of a shape or a free point.
KUV_DECLARE_PRIMITIVE(KUV3DMarkerGP)

// ---- statistics

struct KUVSceneGraphStats {
    /// Triangles of the rep and of everything below it; a rep that hangs in several places counts
    /// in each of them. Saturates.
    std::uint64_t triangleCount = 0;
    /// Reps without children, the rep itself included when it has none.
    std::uint64_t leafCount = 0;
};

class KUV_EXPORT KUVSceneGraphStatHelper {
public:
    /// Overwrites `stats` with the numbers of `rep` and everything below it. Fails for null.
    ///
    /// The numbers of bags are remembered until a bag, of whatever scene, gets or loses a child, or
    /// dies with children: asking for every bag of a scene costs one walk over it. A rep that
    /// hangs below itself counts nothing there. Throws `std::bad_alloc`.
    static KUVResult KUVGetSceneGraphRepStats(KUVRep* rep, KUVSceneGraphStats& stats);
};

// ---- paths

/// A run of reps in order, with a reference on each. Copies share their storage until one of them
/// is changed: copying costs the same whatever the length, and so do the many paths to the levels
/// of one deep scene. Reps may be kept alive until the last run that shares the storage is gone.
///
/// Operations that add may throw `std::bad_alloc` and then change nothing.
class KUV_EXPORT KUVRepRun {
public:
    KUVRepRun() = default;
    KUVRepRun(const KUVRepRun& other);
    KUVRepRun& operator=(const KUVRepRun& other);
    ~KUVRepRun();

    int Count() const { return count_; }
    /// The rep at `index`, or null outside the range. Borrowed.
    KUVRep* operator[](int index) const;
    /// Appends `rep`, which is not null.
    void Append(KUVRep* rep);
    /// Appends `rep`; shares the storage of `other` when that makes this run a beginning of it.
    void AppendSharing(KUVRep* rep, const KUVRepRun& other);
    /// Takes the rep at `index` out; ignored outside the range.
    void RemoveAt(int index);
    void Empty();

private:
    struct Storage;

    static void Drop(Storage* storage);

    Storage* storage_ = nullptr;
    int count_ = 0;
};

/// A path of reps from an outer one to an inner one, with a cursor.
///
/// The cursor is -1 before the first rep and the size of the path behind the last. Reps are
/// referenced by the path; numbers of sub-elements name primitives of the last rep. A copy takes
/// over reps, cursor, lock and sub-elements.
///
/// The lock tells that somebody is walking the path. While it is set the path refuses the reads
/// marked (L): they answer as on an empty path. Whoever has to read such a path calls `UnlockPath`,
/// reads, and locks it again if it had been locked. Steps and changes are not refused.
///
/// Operations that add, and copies, may throw `std::bad_alloc` and then change nothing.
class KUV_EXPORT KUVRepPath : public KUVBaseUnknown {
    KUV_DECLARE_CLASS
public:
    KUVRepPath();
    KUVRepPath(const KUVRepPath& other);
    KUVRepPath& operator=(const KUVRepPath& other);
    ~KUVRepPath() override;

    /// (L) Number of reps.
    int Size() const;
    /// (L) Where the cursor stands; -1 before the first rep.
    int GetCursorPosition() const;
    /// (L) The rep under the cursor, or null. Borrowed.
    KUVRep* GetCurrentRep() const;
    /// (L) The rep at `index`, or null outside the range. Borrowed.
    KUVRep* operator[](int index) const;
    /// (L) The numbers of the primitives that the path designates in its last rep; never null.
    const list<int>* GetSubElementList() const;
    /// (L) The viewpoint that the path was made for, or null. Borrowed.
    virtual KUVViewpoint* GetViewpoint() const;
    /// (L) 1 when the reps of `other` stand in this path in the same order without gaps; an empty
    /// `other` is contained in every path.
    unsigned char Contains(const KUVRepPath& other) const;

    /// Puts the cursor before the first rep.
    void InitToTopRep();
    /// Puts the cursor behind the last rep: the next `NextFatherRep` gives the last rep itself.
    void InitToLeafRep();
    /// Steps inwards and gives the rep reached; null, leaving the cursor, when there is none.
    KUVRep* NextChildRep();
    /// Steps outwards and gives the rep reached; null, leaving the cursor, when there is none.
    KUVRep* NextFatherRep();

    /// Appends `rep`, takes a reference and puts the cursor on it. Null is ignored. `reserved` is
    /// the host's: modules pass 0 or 1.
    void AddRep(KUVRep* rep, int reserved);
    /// Takes the last occurrence of `rep` out. A cursor on a later rep stays on that rep; one that
    /// would leave the path goes to its last rep. Harmless when the rep is null or not there.
    void RemoveRep(KUVRep* rep);
    /// Takes all reps out and puts the cursor at -1. Sub-elements and lock stay.
    void Empty();
    /// Replaces the numbers of the sub-elements, nothing else.
    void Load(const list<int>& subElements);

    /// Sets the lock.
    void LockPath() { locked_ = true; }
    /// Clears the lock and gives 1 when it had been set, else 0.
    unsigned char UnlockPath();
    unsigned char IsLocked() const { return locked_; }

protected:
    const KUVRepRun& Reps() const { return reps_; }

private:
    KUVRepRun reps_;
    list<int> subElements_;
    int cursor_ = -1;
    bool locked_ = false;
};

/// The path to what was picked in a viewpoint: a rep or a primitive of it, with the point and the
/// normals found there.
///
/// `Push`, `Pop` and `GetTopRep` work on a stack of the path's own, which has nothing to do with
/// its reps. A copy takes over everything.
class KUV_EXPORT KUVPickPath : public KUVRepPath {
    KUV_DECLARE_CLASS
public:
    KUVPickPath();
    /// Takes a reference on `viewpoint`, which may be null.
    explicit KUVPickPath(KUVViewpoint* viewpoint);
    KUVPickPath(const KUVPickPath& other);
    KUVPickPath& operator=(const KUVPickPath& other);
    ~KUVPickPath() override;

    KUVViewpoint* GetViewpoint() const override;

    /// Puts `rep` on the stack and takes a reference. Null is ignored.
    void Push(KUVRep* rep);
    /// Takes the top of the stack away; nothing on an empty stack.
    void Pop();
    /// The top of the stack, or null. Borrowed.
    KUVRep* GetTopRep() const;

    /// The picked point, scene coordinates.
    const KUVMathPointf& GetGlobalIntersection() const { return intersection_; }
    void SetIntersection(const KUVMathPointf& point) { intersection_ = point; }
    /// The normal at the picked point, in the coordinates of the picked rep.
    const KUVMathDirectionf& GetNormal() const { return normal_; }
    void SetNormal(const KUVMathDirectionf& normal) { normal_ = normal; }
    /// The normal in scene coordinates; follows `SetNormal` until it is set itself.
    const KUVMathDirectionf& GetGlobalNormal() const
    {
        return hasGlobalNormal_ ? globalNormal_ : normal_;
    }
    void SetGlobalNormal(const KUVMathDirectionf& normal);
    /// How the host reads the path when it turns it into a path element.
    void SetInteractiveContext(int context) { interactiveContext_ = context; }
    int GetInteractiveContext() const { return interactiveContext_; }

private:
    KUVViewpoint* viewpoint_ = nullptr;
    KUVRepRun stack_;
    KUVMathPointf intersection_;
    KUVMathDirectionf normal_;
    KUVMathDirectionf globalNormal_;
    bool hasGlobalNormal_ = false;
    int interactiveContext_ = 0;
};

/// A rep that stands for a path while a selection of several elements is shown as one.
class KUV_EXPORT KUVTransientPathElementRep : public KUVRep {
    KUV_DECLARE_CLASS
public:
    /// A transient rep and the path that it stands for; the caller owns one reference on the path.
    using SubPath = std::pair<KUVTransientPathElementRep*, KUVRepPath*>;

    static KUVTransientPathElementRep* CreateRep();
    ~KUVTransientPathElementRep() override;

    /// Adds a path that this rep stands for and takes a reference. Null is ignored.
    void AddSubRepPath(KUVRepPath* path);

    /// 1 when the last rep of `path` is a transient rep.
    static unsigned char IsMetaRepPath(const KUVRepPath& path);
    /// Appends the paths that the last rep of `path` stands for to `subPaths`, each with a
    /// reference for the caller. Fails when `path` is no meta rep path.
    static KUVResult ExtractSubRepPaths(const KUVRepPath& path, std::vector<SubPath>& subPaths);

private:
    KUVTransientPathElementRep();

    std::vector<KUVRepPath*> subPaths_;
};

#endif
