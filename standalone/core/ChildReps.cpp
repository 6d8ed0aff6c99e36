#include "KUVRep.h"

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

namespace {

/// Up to this many entries a child is found by looking at them one after the other.
constexpr int LARGEST_SEARCHED_BAG = 16;

constexpr int NOWHERE = -1;

std::size_t HashOf(const KUVRep* rep)
{
    // The low bits of addresses are all alike; the high bits of such a product are not.
    return static_cast<std::size_t>(
        (reinterpret_cast<std::uintptr_t>(rep) * 11400714819323198485ULL) >> 20U);
}

}  // namespace

/// The entries of a bag, in order. In a large bag a child that is taken out leaves a gap, and a
/// hash table with open addressing knows the place of each child. Gaps are closed when the list is
/// read, and before they outnumber the children.
struct KUVChildReps::Data {
    list<KUVRep> entries;
    /// Places in `entries`, or `NOWHERE`. A power of two in size, at most half full; empty for a
    /// small bag.
    std::vector<int> table;
    int childCount = 0;
    /// The next of the bags that wait to be emptied.
    Data* nextDoomed = nullptr;

    int Find(const KUVRep* rep) const
    {
        if (!table.empty())
            return table[SlotOf(rep)];
        for (int place = 0; place < entries.Count(); ++place) {
            if (entries[place] == rep)
                return place;
        }
        return NOWHERE;
    }

    void Append(KUVRep* rep)
    {
        if (entries.Count() > 2 * static_cast<std::int64_t>(childCount) + LARGEST_SEARCHED_BAG)
            CloseGaps();
        if (childCount >= LARGEST_SEARCHED_BAG)
            GrowTable();
        entries.Append(rep);
        ++childCount;
        if (!table.empty())
            table[SlotOf(rep)] = entries.Count() - 1;
    }

    void TakeOut(int place)
    {
        if (!table.empty())
            EraseSlot(SlotOf(entries[place]));
        entries.Replace(place, nullptr);
        --childCount;
        int count = entries.Count();
        while (count > 0 && !entries[count - 1])
            --count;
        entries.Truncate(count);
        if (count <= LARGEST_SEARCHED_BAG)
            CloseGaps();
    }

    void CloseGaps()
    {
        if (childCount == entries.Count())
            return;
        int kept = 0;
        for (int place = 0; place < entries.Count(); ++place) {
            KUVRep* const rep = entries[place];
            if (!rep)
                continue;
            if (!table.empty())
                table[SlotOf(rep)] = kept;
            entries.Replace(kept++, rep);
        }
        entries.Truncate(kept);
    }

private:
    /// The slot that knows the place of `rep`, or the empty one where it belongs.
    std::size_t SlotOf(const KUVRep* rep) const
    {
        const std::size_t mask = table.size() - 1;
        std::size_t slot = HashOf(rep) & mask;
        while (table[slot] != NOWHERE && entries[table[slot]] != rep)
            slot = (slot + 1) & mask;
        return slot;
    }

    /// Empties a slot and moves those behind it up, so that no search ends at the hole.
    void EraseSlot(std::size_t hole)
    {
        const std::size_t mask = table.size() - 1;
        for (std::size_t next = (hole + 1) & mask; table[next] != NOWHERE;
             next = (next + 1) & mask) {
            const std::size_t home = HashOf(entries[table[next]]) & mask;
            if (((next - home) & mask) >= ((next - hole) & mask)) {
                table[hole] = table[next];
                hole = next;
            }
        }
        table[hole] = NOWHERE;
    }

    /// Makes the table large enough for one child more.
    void GrowTable()
    {
        if (table.size() / 2 > static_cast<std::size_t>(childCount))
            return;
        std::size_t size = 64;
        while (size < 4 * (static_cast<std::size_t>(childCount) + 1))
            size *= 2;
        std::vector<int> larger(size, NOWHERE);
        table.swap(larger);
        for (int place = 0; place < entries.Count(); ++place) {
            if (const KUVRep* const rep = entries[place])
                table[SlotOf(rep)] = place;
        }
    }
};

KUVChildReps::KUVChildReps() = default;

KUVChildReps::~KUVChildReps()
{
    // A bag that dies inside another one's destruction waits until that one is done: a chain of
    // bags of any depth dies without recursion, and without memory for a stack of its own.
    static thread_local Data* doomed = nullptr;
    static thread_local bool emptying = false;
    if (!data_)
        return;
    Data* const mine = data_.release();
    mine->nextDoomed = std::exchange(doomed, mine);
    if (emptying)
        return;
    emptying = true;
    while (doomed) {
        const std::unique_ptr<Data> data(std::exchange(doomed, doomed->nextDoomed));
        for (int place = 0; place < data->entries.Count(); ++place) {
            if (KUVRep* const rep = data->entries[place])
                rep->Release();
        }
    }
    emptying = false;
}

void KUVChildReps::Add(KUVRep* rep)
{
    if (!rep)
        return;
    if (!data_)
        data_ = std::make_unique<Data>();
    if (data_->Find(rep) != NOWHERE)
        return;
    data_->Append(rep);
    rep->AddRef();
}

void KUVChildReps::Remove(KUVRep* rep)
{
    const int place = rep && data_ ? data_->Find(rep) : NOWHERE;
    if (place == NOWHERE)
        return;
    data_->TakeOut(place);
    rep->Release();
}

unsigned char KUVChildReps::Has(const KUVRep* rep) const
{
    return rep && data_ && data_->Find(rep) != NOWHERE;
}

const list<KUVRep>& KUVChildReps::GetList() const
{
    static const list<KUVRep> none;
    if (!data_)
        return none;
    data_->CloseGaps();
    return data_->entries;
}
