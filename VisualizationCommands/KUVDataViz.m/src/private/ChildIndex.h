#ifndef ChildIndex_h
#define ChildIndex_h

#include "VisDataTree.h"

#include "KUV3D.h"

#include <cstddef>
#include <cstdint>
#include <unordered_map>

/// Finds children by the element that their path designates, for a tree under construction: gives
/// the same child as looking at the children in order would, in constant time.
///
/// Two paths designate the same element when their current reps are equal, and
/// - if the child's cursor is on its last rep and both paths are of the same size: their
///   sub-elements are equal;
/// - else: their cursor positions are equal.
/// Children are filed under parent, current rep and cursor position. Those whose cursor is on their
/// last rep share one size then, so that a second table has to tell them apart by sub-elements
/// only.
class VisChildIndex {
public:
    /// Makes room for about so many children. Throws `std::bad_alloc`.
    void Reserve(std::size_t children) { entries_.reserve(children); }

    /// The first child of `parent` that designates the same element as `path`, or null.
    VisDataTree* Find(VisDataTree& parent, KUVPickPath& path) const;

    /// Files `child`, which was just inserted as the last child of `parent`. Neither its path nor
    /// the order of the children may change from now on. Throws `std::bad_alloc`.
    void Add(VisDataTree& parent, VisDataTree& child);

private:
    /// Position among the children; the first one counts.
    using Place = std::uint32_t;
    static constexpr Place NOWHERE = 0xFFFFFFFFU;

    struct Key {
        const VisDataTree* parent;
        const KUVRep* rep;
        int cursor;

        bool operator==(const Key& other) const
        {
            return parent == other.parent && rep == other.rep && cursor == other.cursor;
        }
    };
    struct KeyHash {
        std::size_t operator()(const Key& key) const;
    };
    struct Entry {
        /// First child whose cursor is before its last rep.
        Place inner = NOWHERE;
        /// First child whose cursor is on its last rep.
        Place last = NOWHERE;
        /// Further ones, with other sub-elements, are in the second table.
        bool hasMore = false;
    };
    struct NumbersKey {
        const Entry* entry;
        std::uint64_t numbersHash;

        bool operator==(const NumbersKey& other) const
        {
            return entry == other.entry && numbersHash == other.numbersHash;
        }
    };
    struct NumbersKeyHash {
        std::size_t operator()(const NumbersKey& key) const;
    };

    static VisDataTree* FindInOrder(VisDataTree& parent, KUVPickPath& path);
    const Entry* EntryOf(const Key& key) const;
    Place FindLast(VisDataTree& parent, const Entry& entry, KUVPickPath& path) const;
    void AddLast(VisDataTree& parent, Entry& entry, KUVPickPath& path, Place place);

    std::unordered_map<Key, Entry, KeyHash> entries_;
    std::unordered_multimap<NumbersKey, Place, NumbersKeyHash> more_;
    /// A path was filed that no host should make; from then on children are looked at in order.
    bool hasOddPaths_ = false;
};

#endif
