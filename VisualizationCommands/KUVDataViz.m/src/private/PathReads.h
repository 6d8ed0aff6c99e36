#ifndef PathReads_h
#define PathReads_h

// The only way in which the module reads a path: the lock is cleared for the length of one host
// call and put back, so that locked paths can be read and stay locked.

#include "KUV3D.h"

/// Clears the lock of a path while it lives.
class VisLockPause {
public:
    explicit VisLockPause(KUVRepPath& path) : path_(path), wasLocked_(path.UnlockPath() != 0) {}
    ~VisLockPause()
    {
        if (wasLocked_)
            path_.LockPath();
    }
    VisLockPause(const VisLockPause&) = delete;
    VisLockPause& operator=(const VisLockPause&) = delete;

private:
    KUVRepPath& path_;
    bool wasLocked_;
};

inline int Size(KUVRepPath& path)
{
    const VisLockPause pause(path);
    return path.Size();
}

inline int CursorPosition(KUVRepPath& path)
{
    const VisLockPause pause(path);
    return path.GetCursorPosition();
}

inline KUVRep* CurrentRep(KUVRepPath& path)
{
    const VisLockPause pause(path);
    return path.GetCurrentRep();
}

inline KUVRep* RepAt(KUVRepPath& path, int index)
{
    const VisLockPause pause(path);
    return path[index];
}

inline const list<int>* SubElements(KUVRepPath& path)
{
    const VisLockPause pause(path);
    return path.GetSubElementList();
}

inline KUVViewpoint* ViewpointOf(KUVRepPath& path)
{
    const VisLockPause pause(path);
    return path.GetViewpoint();
}

inline bool Contains(KUVRepPath& path, KUVRepPath& other)
{
    const VisLockPause pause(path);
    const VisLockPause otherPause(other);
    return path.Contains(other) != 0;
}

// ---- what follows from the reads

/// The model object that `rep` shows, or null.
inline KUVBaseUnknown* ModelObjectOf(const KUVRep& rep)
{
    const KUVModelIdentificator* const identificator = rep.GetModelIdentificator();
    return identificator ? identificator->GetId() : nullptr;
}

/// Whether nothing of the path lies beyond its cursor. True for an empty path.
inline bool IsCursorOnLast(KUVRepPath& path) { return CursorPosition(path) + 1 >= Size(path); }

/// The number at `index` of a list that may be null; null behind its end, which the first absent
/// entry is.
inline const int* EntryAt(const list<int>* numbers, int index)
{
    return numbers && index < numbers->Count() ? (*numbers)[index] : nullptr;
}

inline bool HasSubElements(KUVRepPath& path) { return EntryAt(SubElements(path), 0) != nullptr; }

/// Whether two lists of sub-elements hold the same numbers up to their ends.
inline bool AreSameNumbers(const list<int>* first, const list<int>* second)
{
    for (int i = 0;; ++i) {
        const int* const a = EntryAt(first, i);
        const int* const b = EntryAt(second, i);
        if (!a || !b)
            return a == b;
        if (*a != *b)
            return false;
    }
}

#endif
