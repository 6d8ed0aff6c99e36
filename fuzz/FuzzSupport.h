#ifndef fuzz_FuzzSupport_h
#define fuzz_FuzzSupport_h

// What the fuzz targets and the soak share: choices taken from an input, nodes that are known to
// live, a font, and the hunt for objects that are left over.

#include "Require.h"
#include "VisDataTree.h"
#include "private/Reference.h"

#include "KUV2D.h"
#include "core/ObjectObserver.h"
#include "core/PixelMemory.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <unordered_set>

namespace fuzz {

/// Numbers for which arithmetic tends to be written wrongly.
constexpr std::array ODD_FLOATS{
    std::numeric_limits<float>::quiet_NaN(),
    std::numeric_limits<float>::infinity(),
    -std::numeric_limits<float>::infinity(),
    std::numeric_limits<float>::max(),
    std::numeric_limits<float>::lowest(),
    std::numeric_limits<float>::min(),
    std::numeric_limits<float>::denorm_min(),
    0.0F,
    -0.0F,
    -1.0F,
    0.49999997F,
    16777216.0F,
    2147483648.0F,
    -2147483648.0F,
    4294967296.0F,
    1.0e9F,
    1.0e-9F,
};

/// The choices of a scenario, a byte each; zeros at the end.
class Bytes {
public:
    Bytes(const std::uint8_t* data, std::size_t size) : next_(data), end_(data + size) {}

    bool AtEnd() const { return next_ == end_; }
    unsigned int Take() { return AtEnd() ? 0 : *next_++; }
    unsigned char TakeFlag() { return static_cast<unsigned char>(Take() % 2); }

    /// A coordinate of a small picture, a bit beyond its edges, or an odd number.
    float TakeFloat()
    {
        const unsigned int choice = Take();
        if (choice < ODD_FLOATS.size())
            return ODD_FLOATS[choice];
        return (static_cast<float>(choice) - 32.0F) * 1.25F;
    }
    /// A side of a small picture.
    float TakeLength() { return static_cast<float>(Take()) * 1.5F; }
    /// Extremes and whatever lies between them.
    long long TakeValue()
    {
        constexpr std::array EXTREMES{std::numeric_limits<long long>::max(),
                                      std::numeric_limits<long long>::min(),
                                      -1LL,
                                      0LL,
                                      1LL << 62U,
                                      1LL << 24U};
        const unsigned int choice = Take();
        return choice < EXTREMES.size() ? EXTREMES[choice] : static_cast<long long>(choice);
    }

private:
    const std::uint8_t* next_;
    const std::uint8_t* end_;
};

/// A node of which it can be told whether it lives.
class Node : public VisDataTree {
public:
    explicit Node(const char* label = "node", const char* icon = "")
        : VisDataTree(nullptr, label, icon)
    {
        Living().insert(this);
    }
    ~Node() override { Living().erase(this); }

    static bool Lives(const VisDataTree* node) { return Living().count(node) == 1; }
    static std::size_t CountLiving() { return Living().size(); }

private:
    static std::unordered_set<const VisDataTree*>& Living()
    {
        static std::unordered_set<const VisDataTree*> living;
        return living;
    }
};

using NodeRef = VisReference<VisDataTree>;

inline bool IsInTree(const VisDataTree* node, const VisDataTree* root)
{
    return node && root && (node == root || node->HasNodeAsParent(root) != 0);
}

/// Every character is 7 wide.
class FuzzFont : public KUVCharacterFont {
public:
    int GetFontIndex(float /*size*/) override { return 0; }
    void GetStringSize(const KUVUnicodeString& text, int* width, int* height, int* descent,
                       int /*fontIndex*/) override
    {
        if (width)
            *width = 7 * static_cast<int>(text.GetLength());
        if (height)
            *height = 14;
        if (descent)
            *descent = 3;
    }
};

/// Odd sizes ask for larger images, and that takes time.
constexpr std::size_t LARGEST_IMAGE = std::size_t{1} << 18U;

/// While this lives, host objects are counted and large pixel buffers are refused. Requires at the
/// end that everything that was made meanwhile is gone.
class LeakCheck : public core::ObjectObserver {
public:
    LeakCheck() : nodes_(Node::CountLiving()), pixelBuffers_(core::CountPixelBuffers())
    {
        core::SetObjectObserver(this);
        core::SetPixelAllocationHook([](std::size_t bytes) { return bytes <= LARGEST_IMAGE; });
    }
    ~LeakCheck() override
    {
        core::SetPixelAllocationHook(nullptr);
        core::SetObjectObserver(nullptr);
        Require(objects_ == 0);
        Require(Node::CountLiving() == nodes_);
        Require(core::CountPixelBuffers() == pixelBuffers_);
    }
    LeakCheck(const LeakCheck&) = delete;
    LeakCheck& operator=(const LeakCheck&) = delete;

    void ObjectMade(const KUVBaseUnknown* /*object*/) noexcept override { ++objects_; }
    void ObjectDestroyed(const KUVBaseUnknown* /*object*/) noexcept override { --objects_; }

private:
    long long objects_ = 0;
    std::size_t nodes_;
    std::size_t pixelBuffers_;
};

}  // namespace fuzz

#endif
