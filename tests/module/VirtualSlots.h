#ifndef module_VirtualSlots_h
#define module_VirtualSlots_h

#include <cstddef>
#include <cstring>

/// The place of a virtual operation in its class's table, counted from 0. The C++ ABI of this
/// platform keeps the byte offset plus one in the first word of a pointer to it; a pointer to an
/// operation that is not virtual holds an address instead, which is even.
template <class MemberPointer>
std::ptrdiff_t SlotOf(MemberPointer member)
{
    std::ptrdiff_t words[2] = {0, 0};
    static_assert(sizeof(member) == sizeof(words), "pointers to members have two words");
    std::memcpy(words, &member, sizeof(words));
    const bool isVirtual = (words[0] & 1) != 0;
    return isVirtual ? (words[0] - 1) / static_cast<std::ptrdiff_t>(sizeof(void*)) : -1;
}

#endif
