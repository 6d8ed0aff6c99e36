#include "private/ChildIndex.h"

#include "private/NodePath.h"
#include "private/PathReads.h"

#include "VisPathUtility.h"

#include <algorithm>

namespace {

constexpr unsigned char IGNORE_PREFIX = 1;

/// Spreads the bits of `value`, which are alike in most places, over the whole word.
std::uint64_t Mixed(std::uint64_t value)
{
    value ^= value >> 32U;
    value *= 0x9E3779B97F4A7C15ULL;
    return value ^ (value >> 29U);
}

std::uint64_t HashOf(const void* pointer)
{
    return Mixed(static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(pointer)));
}

std::uint64_t HashOf(const list<int>* numbers)
{
    std::uint64_t hash = 0;
    for (int i = 0; const int* const number = EntryAt(numbers, i); ++i)
        hash = Mixed(hash + static_cast<std::uint32_t>(*number) + 1U);
    return hash;
}

VisDataTree* ChildAt(VisDataTree& parent, std::uint32_t place)
{
    return place < parent.GetChildren().size() ? parent.GetChildren()[place] : nullptr;
}

}  // namespace

std::size_t VisChildIndex::KeyHash::operator()(const Key& key) const
{
    const std::uint64_t hash = HashOf(key.parent) * 31U + HashOf(key.rep);
    return static_cast<std::size_t>(Mixed(hash + static_cast<std::uint32_t>(key.cursor)));
}

std::size_t VisChildIndex::NumbersKeyHash::operator()(const NumbersKey& key) const
{
    return static_cast<std::size_t>(HashOf(key.entry) ^ key.numbersHash);
}

VisDataTree* VisChildIndex::FindInOrder(VisDataTree& parent, KUVPickPath& path)
{
    for (VisDataTree* const child : parent.GetChildren()) {
        if (child && VisPathUtility::ComparePath(PickPathOf(*child), &path, IGNORE_PREFIX) == 1)
            return child;
    }
    return nullptr;
}

const VisChildIndex::Entry* VisChildIndex::EntryOf(const Key& key) const
{
    const auto found = entries_.find(key);
    return found != entries_.end() ? &found->second : nullptr;
}

VisDataTree* VisChildIndex::Find(VisDataTree& parent, KUVPickPath& path) const
{
    const KUVRep* const rep = CurrentRep(path);
    if (!rep || hasOddPaths_)
        return FindInOrder(parent, path);
    const int cursor = CursorPosition(path);
    const int size = Size(path);
    Place place = NOWHERE;
    const Entry* const entry = EntryOf({&parent, rep, cursor});
    if (entry) {
        place = entry->inner;
        // Children on their last rep here are of size cursor + 1.
        if (cursor + 1 != size)
            place = std::min(place, entry->last);
    }
    const Entry* const sameSize = cursor + 1 == size ? entry : EntryOf({&parent, rep, size - 1});
    if (sameSize)
        place = std::min(place, FindLast(parent, *sameSize, path));
    return ChildAt(parent, place);
}

/// The place of the child of `entry`, on its last rep, with the sub-elements of `path`.
VisChildIndex::Place VisChildIndex::FindLast(VisDataTree& parent, const Entry& entry,
                                             KUVPickPath& path) const
{
    const list<int>* const numbers = SubElements(path);
    const auto isSame = [&](Place place) {
        const VisDataTree* const child = ChildAt(parent, place);
        return child && AreSameNumbers(SubElements(*PickPathOf(*child)), numbers);
    };
    if (isSame(entry.last))
        return entry.last;
    if (!entry.hasMore)
        return NOWHERE;
    const auto range = more_.equal_range({&entry, HashOf(numbers)});
    for (auto it = range.first; it != range.second; ++it) {
        if (isSame(it->second))
            return it->second;
    }
    return NOWHERE;
}

void VisChildIndex::Add(VisDataTree& parent, VisDataTree& child)
{
    KUVPickPath* const path = PickPathOf(child);
    const KUVRep* const rep = path ? CurrentRep(*path) : nullptr;
    if (!rep)
        return;  // Designates the same as paths without current rep only, which are not looked up.
    const Place place = static_cast<Place>(parent.GetChildren().size() - 1);
    const int cursor = CursorPosition(*path);
    const int size = Size(*path);
    Entry& entry = entries_[{&parent, rep, cursor}];
    if (cursor + 1 < size)
        entry.inner = std::min(entry.inner, place);
    else if (cursor + 1 == size)
        AddLast(parent, entry, *path, place);
    else
        hasOddPaths_ = true;
}

void VisChildIndex::AddLast(VisDataTree& parent, Entry& entry, KUVPickPath& path, Place place)
{
    if (entry.last == NOWHERE) {
        entry.last = place;
    } else if (FindLast(parent, entry, path) == NOWHERE) {
        more_.insert({NumbersKey{&entry, HashOf(SubElements(path))}, place});
        entry.hasMore = true;
    }
}
