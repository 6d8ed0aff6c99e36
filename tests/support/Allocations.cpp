#include "support/Allocations.h"

#include "support/PointerTable.h"

#include "core/PixelMemory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <mutex>
#include <new>

namespace {

// ---- failing

/// What happens to the allocations of a thread.
struct FailurePlan {
    bool active = false;
    bool paused = false;
    bool everyFollowing = false;
    bool failed = false;
    std::size_t allocationsLeft = 0;
};

thread_local FailurePlan plan;

bool MustFail()
{
    if (!plan.active || plan.paused)
        return false;
    if (plan.failed)
        return plan.everyFollowing;
    if (--plan.allocationsLeft > 0)
        return false;
    plan.failed = true;
    return true;
}

bool MayAllocatePixels(std::size_t /*bytes*/) { return !MustFail(); }

// ---- counting

struct Block {
    std::size_t size;
    std::size_t number;
};

/// All live allocations made while somebody counts. Never destroyed: blocks are freed until the
/// very end of the process.
struct Table {
    std::mutex mutex;
    support::PointerTable<Block> blocks;
    std::size_t lastNumber = 0;
    int scopes = 0;
};

Table& TheTable()
{
    static Table* const table = new (std::malloc(sizeof(Table))) Table;
    return *table;
}

void Remember(const void* block, std::size_t size)
{
    Table& table = TheTable();
    const std::lock_guard<std::mutex> guard(table.mutex);
    if (table.scopes > 0 && !plan.paused)
        table.blocks.Put(block, {size, ++table.lastNumber});
}

void Forget(const void* block)
{
    Table& table = TheTable();
    const std::lock_guard<std::mutex> guard(table.mutex);
    table.blocks.Erase(block);
}

void* Allocate(std::size_t size, std::size_t alignment) noexcept
{
    if (MustFail())
        return nullptr;
    const std::size_t asked = std::max<std::size_t>(size, 1);
    void* const block =
        alignment <= alignof(std::max_align_t)
            ? std::malloc(asked)
            : std::aligned_alloc(alignment, (asked + alignment - 1) / alignment * alignment);
    if (block)
        Remember(block, size);
    return block;
}

void* AllocateOrThrow(std::size_t size, std::size_t alignment)
{
    void* const block = Allocate(size, alignment);
    if (!block)
        throw std::bad_alloc();
    return block;
}

void Free(void* block) noexcept
{
    if (!block)
        return;
    Forget(block);
    std::free(block);
}

constexpr std::size_t PLAIN = alignof(std::max_align_t);

std::size_t Aligned(std::align_val_t alignment) { return static_cast<std::size_t>(alignment); }

}  // namespace

// ---- the operators

void* operator new(std::size_t size) { return AllocateOrThrow(size, PLAIN); }
void* operator new[](std::size_t size) { return AllocateOrThrow(size, PLAIN); }
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept
{
    return Allocate(size, PLAIN);
}
void* operator new[](std::size_t size, const std::nothrow_t& /*tag*/) noexcept
{
    return Allocate(size, PLAIN);
}
void* operator new(std::size_t size, std::align_val_t alignment)
{
    return AllocateOrThrow(size, Aligned(alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment)
{
    return AllocateOrThrow(size, Aligned(alignment));
}
void* operator new(std::size_t size, std::align_val_t alignment,
                   const std::nothrow_t& /*tag*/) noexcept
{
    return Allocate(size, Aligned(alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment,
                     const std::nothrow_t& /*tag*/) noexcept
{
    return Allocate(size, Aligned(alignment));
}
void operator delete(void* block) noexcept { Free(block); }
void operator delete[](void* block) noexcept { Free(block); }
void operator delete(void* block, std::size_t /*size*/) noexcept { Free(block); }
void operator delete[](void* block, std::size_t /*size*/) noexcept { Free(block); }
void operator delete(void* block, const std::nothrow_t& /*tag*/) noexcept { Free(block); }
void operator delete[](void* block, const std::nothrow_t& /*tag*/) noexcept { Free(block); }
void operator delete(void* block, std::align_val_t /*alignment*/) noexcept { Free(block); }
void operator delete[](void* block, std::align_val_t /*alignment*/) noexcept { Free(block); }
void operator delete(void* block, std::size_t /*size*/, std::align_val_t /*alignment*/) noexcept
{
    Free(block);
}
void operator delete[](void* block, std::size_t /*size*/, std::align_val_t /*alignment*/) noexcept
{
    Free(block);
}

namespace support {

// ---- failing

FailingAllocation::FailingAllocation(std::size_t failing, Mode mode)
{
    plan = {};
    plan.allocationsLeft = std::max<std::size_t>(failing, 1);
    plan.everyFollowing = mode == Mode::FromThere;
    core::SetPixelAllocationHook(&MayAllocatePixels);
    plan.active = true;
}

FailingAllocation::~FailingAllocation()
{
    plan = {};
    core::SetPixelAllocationHook(nullptr);
}

bool FailingAllocation::HasFailed() const { return plan.failed; }

UncountedAllocations::UncountedAllocations() : wasCounting_(!plan.paused) { plan.paused = true; }

UncountedAllocations::~UncountedAllocations() { plan.paused = !wasCounting_; }

std::size_t ForEveryFailingAllocation(const std::function<void()>& scenario,
                                      FailingAllocation::Mode mode, std::size_t mostFailures)
{
    scenario();
    for (std::size_t failing = 1; failing <= mostFailures; ++failing) {
        const AllocationScope scope;
        const std::size_t pixelBuffers = core::CountPixelBuffers();
        bool failed = false;
        {
            const FailingAllocation allocation(failing, mode);
            try {
                scenario();
            } catch (const std::bad_alloc&) {
                // One of the two ways in which an operation may end; the other is to go on.
            }
            failed = allocation.HasFailed();
        }
        const std::size_t left = scope.CountLive();
        const std::size_t pixelBuffersLeft = core::CountPixelBuffers() - pixelBuffers;
        EXPECT_EQ(left, 0U) << "allocations left over when allocation " << failing << " failed";
        EXPECT_EQ(pixelBuffersLeft, 0U)
            << "pixel buffers left over when allocation " << failing << " failed";
        if (!failed)
            return failing - 1;
    }
    return mostFailures;
}

// ---- counting

AllocationScope::AllocationScope()
{
    Table& table = TheTable();
    const std::lock_guard<std::mutex> guard(table.mutex);
    ++table.scopes;
    begin_ = table.lastNumber;
}

AllocationScope::~AllocationScope()
{
    Table& table = TheTable();
    const std::lock_guard<std::mutex> guard(table.mutex);
    if (--table.scopes == 0)
        table.blocks.Clear();
}

std::size_t AllocationScope::CountLive() const
{
    std::size_t count = 0;
    VisitLiveAllocations(begin_,
                         [&count](const void* /*block*/, std::size_t /*size*/) { ++count; });
    return count;
}

std::size_t AllocationScope::SumLiveBytes() const
{
    std::size_t sum = 0;
    VisitLiveAllocations(begin_, [&sum](const void* /*block*/, std::size_t size) { sum += size; });
    return sum;
}

void VisitLiveAllocations(std::size_t begin,
                          const std::function<void(const void* block, std::size_t size)>& visit)
{
    Table& table = TheTable();
    const std::lock_guard<std::mutex> guard(table.mutex);
    table.blocks.ForEach([&](const void* block, const Block& record) {
        if (record.number > begin)
            visit(block, record.size);
    });
}

std::size_t CurrentAllocationNumber()
{
    Table& table = TheTable();
    const std::lock_guard<std::mutex> guard(table.mutex);
    return table.lastNumber;
}

}  // namespace support
