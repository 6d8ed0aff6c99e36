#ifndef support_LiveInstances_h
#define support_LiveInstances_h

// The table of live instances. Linking the test support is enough: a test during which an object
// was made that is still alive when it ends fails, with the class and the number of its objects.
// That goes for every `KUVBaseUnknown` and every pixel buffer, and for other polymorphic classes
// that a test source asks to be watched:
//
//     const support::WatchedClass watchViews("VisTreeSpaceFillingView", [] {
//         const VisTreeSpaceFillingView sample(nullptr);
//         return support::VirtualTableOf(sample);
//     });

#include <functional>
#include <string>

class KUVBaseUnknown;

namespace support {

/// What tells the objects of one concrete polymorphic class from all others.
const void* VirtualTableAt(const void* object);

template <class Object>
const void* VirtualTableOf(const Object& object)
{
    // The address of the whole object, also when its class has several bases.
    return VirtualTableAt(dynamic_cast<const void*>(&object));
}

/// Watches the objects of a concrete class that operator new makes. `findVirtualTable` is called
/// once, before the first test. Has static lifetime.
class WatchedClass {
public:
    WatchedClass(std::string name, std::function<const void*()> findVirtualTable);
};

/// Takes an object that lives on purpose when the test ends out of the table.
void KeepsLiving(const KUVBaseUnknown* object);

/// The host objects and watched instances that were made since the test began and are alive, a line
/// a class: "3 VisDataTree". Empty when there are none.
std::string DescribeLiveInstances();

}  // namespace support

#endif
