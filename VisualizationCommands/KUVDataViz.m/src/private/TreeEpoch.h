#ifndef TreeEpoch_h
#define TreeEpoch_h

#include <cstdint>

/// Counts what may change results that are remembered across nodes: the shape of any tree, or which
/// cache belongs to which node. Whoever remembers something keeps the number beside it.
struct VisTreeEpoch {
    static std::uint64_t current;
    static void Advance() { ++current; }
};

#endif
