#include "support/LiveInstances.h"

#include "support/Allocations.h"
#include "support/PointerTable.h"

#include "core/ObjectObserver.h"
#include "core/PixelMemory.h"

#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace {

/// The host objects that were made since the test began and are alive.
class LiveObjects : public core::ObjectObserver {
public:
    void ObjectMade(const KUVBaseUnknown* object) noexcept override
    {
        const std::lock_guard<std::mutex> guard(mutex_);
        objects_.Put(object, 0);
    }

    void ObjectDestroyed(const KUVBaseUnknown* object) noexcept override
    {
        const std::lock_guard<std::mutex> guard(mutex_);
        objects_.Erase(object);
    }

    void Clear()
    {
        const std::lock_guard<std::mutex> guard(mutex_);
        objects_.Clear();
    }

    void CountByClass(std::map<std::string, std::size_t>& counts)
    {
        const std::lock_guard<std::mutex> guard(mutex_);
        objects_.ForEach([&counts](const void* object, char /*value*/) {
            ++counts[static_cast<const KUVBaseUnknown*>(object)->IsA()];
        });
    }

private:
    std::mutex mutex_;
    support::PointerTable<char> objects_;
};

struct Watched {
    std::string name;
    std::function<const void*()> findVirtualTable;
};

std::vector<Watched>& WatchedClasses()
{
    static auto* const classes = new std::vector<Watched>;
    return *classes;
}

/// Begins the table before each test and looks at it afterwards.
class LiveInstanceListener : public testing::EmptyTestEventListener {
public:
    void OnTestProgramStart(const testing::UnitTest& /*unitTest*/) override
    {
        for (const Watched& watched : WatchedClasses())
            names_.emplace(watched.findVirtualTable(), watched.name);
    }

    void OnTestStart(const testing::TestInfo& /*info*/) override
    {
        objects_.Clear();
        core::SetObjectObserver(&objects_);
        pixelBuffers_ = core::CountPixelBuffers();
        allocations_ = std::make_unique<support::AllocationScope>();
        begin_ = support::CurrentAllocationNumber();
    }

    void OnTestEnd(const testing::TestInfo& /*info*/) override
    {
        core::SetObjectObserver(nullptr);
        const std::string left = Describe();
        const std::size_t pixelBuffers = core::CountPixelBuffers();
        allocations_.reset();
        objects_.Clear();
        if (!left.empty())
            ADD_FAILURE() << "objects are left over after the test:\n" << left;
        if (pixelBuffers > pixelBuffers_)
            ADD_FAILURE() << pixelBuffers - pixelBuffers_
                          << " pixel buffers are left over after the test";
    }

    std::string Describe()
    {
        std::map<std::string, std::size_t> counts;
        objects_.CountByClass(counts);
        const support::UncountedAllocations uncounted;
        std::map<const void*, std::size_t> tables;
        for (const auto& [table, name] : names_)
            tables[table] = 0;
        support::VisitLiveAllocations(begin_, [&tables](const void* block, std::size_t size) {
            if (size < sizeof(void*))
                return;
            const auto watched = tables.find(support::VirtualTableAt(block));
            if (watched != tables.end())
                ++watched->second;
        });
        for (const auto& [table, count] : tables) {
            if (count > 0)
                counts[names_[table]] += count;
        }
        std::string lines;
        for (const auto& [name, count] : counts)
            lines += std::to_string(count) + ' ' + name + '\n';
        return lines;
    }

    LiveObjects& Objects() { return objects_; }

private:
    LiveObjects objects_;
    std::map<const void*, std::string> names_;
    std::unique_ptr<support::AllocationScope> allocations_;
    std::size_t pixelBuffers_ = 0;
    std::size_t begin_ = 0;
};

/// Owned by the test library from the moment it is appended.
LiveInstanceListener* const LISTENER = [] {
    auto* const listener = new LiveInstanceListener;
    testing::UnitTest::GetInstance()->listeners().Append(listener);
    return listener;
}();

}  // namespace

// The linker is told to look for this name, so that this source is part of every test executable.
extern "C" {
extern const int KUV_TEST_SUPPORT;
const int KUV_TEST_SUPPORT = 1;
}

namespace support {

const void* VirtualTableAt(const void* object)
{
    const void* table = nullptr;
    std::memcpy(&table, object, sizeof table);
    return table;
}

WatchedClass::WatchedClass(std::string name, std::function<const void*()> findVirtualTable)
{
    WatchedClasses().push_back({std::move(name), std::move(findVirtualTable)});
}

void KeepsLiving(const KUVBaseUnknown* object) { LISTENER->Objects().ObjectDestroyed(object); }

std::string DescribeLiveInstances() { return LISTENER->Describe(); }

}  // namespace support
