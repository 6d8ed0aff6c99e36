#ifndef core_ObjectObserver_h
#define core_ObjectObserver_h

#include "KUVObjectModel.h"

namespace core {

/// Is told of every host object that is made or destroyed. For tests that look for objects left
/// over; without an observer an object pays one load of a pointer.
class KUV_EXPORT ObjectObserver {
public:
    virtual ~ObjectObserver() = default;
    /// The object is under construction: only its address may be used.
    virtual void ObjectMade(const KUVBaseUnknown* object) noexcept = 0;
    /// The object is under destruction: only its address may be used. Objects that were made before
    /// the observer was set are reported as well.
    virtual void ObjectDestroyed(const KUVBaseUnknown* object) noexcept = 0;
};

/// Sets the observer, or takes it away with null. Nothing is owned. An observer is called on
/// whatever thread makes the object.
KUV_EXPORT void SetObjectObserver(ObjectObserver* observer);

}  // namespace core

#endif
