#ifndef support_Allocations_h
#define support_Allocations_h

// Memory in tests. The test executables replace operator new: allocations can be made to fail and
// those that are left over can be counted. Pixel buffers (`KUVAllocatePixels`) take part as well;
// what C libraries allocate with malloc does not.

#include <cstddef>
#include <functional>

namespace support {

/// While this lives, the `failing`-th allocation of this thread from now on fails (1 is the next
/// one), once or together with all that follow. At most one at a time in a thread.
class FailingAllocation {
public:
    enum class Mode { Once, FromThere };

    explicit FailingAllocation(std::size_t failing, Mode mode = Mode::Once);
    ~FailingAllocation();
    FailingAllocation(const FailingAllocation&) = delete;
    FailingAllocation& operator=(const FailingAllocation&) = delete;

    /// Whether it came to that.
    bool HasFailed() const;
};

/// While this lives, allocations of this thread neither fail nor count: for checks in the middle of
/// a scenario, which make texts when they fail.
class UncountedAllocations {
public:
    UncountedAllocations();
    ~UncountedAllocations();
    UncountedAllocations(const UncountedAllocations&) = delete;
    UncountedAllocations& operator=(const UncountedAllocations&) = delete;

private:
    bool wasCounting_;
};

/// What was allocated since this began, on any thread, and was not freed yet.
class AllocationScope {
public:
    AllocationScope();
    ~AllocationScope();
    AllocationScope(const AllocationScope&) = delete;
    AllocationScope& operator=(const AllocationScope&) = delete;

    std::size_t CountLive() const;
    /// As asked for, without the overhead of the allocator.
    std::size_t SumLiveBytes() const;

private:
    std::size_t begin_;
};

/// Runs `scenario` once as it is, then with its first allocation failing, its second one, and so on
/// until it comes to its end without a failure. It may throw `std::bad_alloc`; nothing else. After
/// each run everything that it allocated must be gone (a failure of the test otherwise), so
/// `scenario` makes and releases all it works with, and leaves nothing behind when it throws.
///
/// The first run is for what is made once in a process. Gives the number of allocations that
/// failed, at most `mostFailures`.
std::size_t ForEveryFailingAllocation(const std::function<void()>& scenario,
                                      FailingAllocation::Mode mode = FailingAllocation::Mode::Once,
                                      std::size_t mostFailures = static_cast<std::size_t>(-1));

/// Calls `visit` with every live allocation made since `begin` (see `CurrentAllocationNumber`).
/// `visit` must not allocate.
void VisitLiveAllocations(std::size_t begin,
                          const std::function<void(const void* block, std::size_t size)>& visit);
std::size_t CurrentAllocationNumber();

}  // namespace support

#endif
