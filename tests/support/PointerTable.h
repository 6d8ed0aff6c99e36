#ifndef support_PointerTable_h
#define support_PointerTable_h

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace support {

/// A hash table by address that takes its memory past operator new, because operator new itself
/// writes to it, and costs little enough to follow a million objects in a test. Not thread-safe.
/// Ends the process when memory runs out.
template <class Value>
class PointerTable {
public:
    PointerTable() = default;
    PointerTable(const PointerTable&) = delete;
    PointerTable& operator=(const PointerTable&) = delete;
    ~PointerTable() { std::free(slots_); }

    /// Stores `value` for `pointer`, which is not null, in the place of a former one.
    void Put(const void* pointer, const Value& value)
    {
        if (2 * (count_ + 1) > capacity_)
            Grow();
        Slot& slot = slots_[IndexOf(pointer)];
        count_ += slot.pointer ? 0U : 1U;
        slot = {pointer, value};
    }

    /// Takes `pointer` out; nothing when it is not there.
    void Erase(const void* pointer)
    {
        if (count_ == 0)
            return;
        std::size_t hole = IndexOf(pointer);
        if (!slots_[hole].pointer)
            return;
        --count_;
        // Moves up what a search would no longer find behind the hole.
        for (std::size_t next = Following(hole); slots_[next].pointer; next = Following(next)) {
            const std::size_t home = HomeOf(slots_[next].pointer);
            if (((next - home) & (capacity_ - 1)) >= ((next - hole) & (capacity_ - 1))) {
                slots_[hole] = slots_[next];
                hole = next;
            }
        }
        slots_[hole].pointer = nullptr;
    }

    void Clear()
    {
        std::free(slots_);
        slots_ = nullptr;
        capacity_ = 0;
        count_ = 0;
    }

    /// Calls `visit(pointer, value)` for every entry, in no particular order.
    template <class Visit>
    void ForEach(Visit visit) const
    {
        for (std::size_t i = 0; i < capacity_; ++i) {
            if (slots_[i].pointer)
                visit(slots_[i].pointer, slots_[i].value);
        }
    }

private:
    struct Slot {
        const void* pointer;
        Value value;
    };

    std::size_t HomeOf(const void* pointer) const
    {
        // The highest bits of such a product spread evenly whatever the distance of the addresses.
        const auto address = reinterpret_cast<std::uintptr_t>(pointer);
        return static_cast<std::size_t>((address * 11400714819323198485ULL) >> shift_);
    }

    std::size_t Following(std::size_t slot) const { return (slot + 1) & (capacity_ - 1); }

    /// The slot of `pointer`, or the empty one where it belongs.
    std::size_t IndexOf(const void* pointer) const
    {
        std::size_t slot = HomeOf(pointer);
        while (slots_[slot].pointer && slots_[slot].pointer != pointer)
            slot = Following(slot);
        return slot;
    }

    void Grow()
    {
        Slot* const former = slots_;
        const std::size_t formerCapacity = capacity_;
        capacity_ = capacity_ == 0 ? SMALLEST : 2 * capacity_;
        shift_ = formerCapacity == 0 ? 64U - SMALLEST_BITS : shift_ - 1U;
        slots_ = static_cast<Slot*>(std::calloc(capacity_, sizeof(Slot)));
        if (!slots_)
            std::abort();
        for (std::size_t i = 0; i < formerCapacity; ++i) {
            if (former[i].pointer)
                slots_[IndexOf(former[i].pointer)] = former[i];
        }
        std::free(former);
    }

    static constexpr unsigned int SMALLEST_BITS = 10;
    static constexpr std::size_t SMALLEST = std::size_t{1} << SMALLEST_BITS;

    Slot* slots_ = nullptr;
    std::size_t capacity_ = 0;
    std::size_t count_ = 0;
    /// Leaves as many bits of a product as the capacity has.
    unsigned int shift_ = 0;
};

}  // namespace support

#endif
