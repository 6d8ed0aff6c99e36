#ifndef module_LayoutComparison_h
#define module_LayoutComparison_h

#include "VisTreeSpaceFillingLayout.h"
#include "VisTreeSpaceFillingLayoutCache.h"

#include "module/reference/LayoutReference.h"

#include "private/Reference.h"

#include "core/StandaloneViewer.h"
#include "support/FixedWidthFont.h"

#include "KUV2D.h"
#include "KUVEvents.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

/// A random tree in a layout of the module and in the reference, side by side. Each step does the
/// same to both, through the host's own events where a user could do it; what was answered and
/// told, and everything that both keep, must be the same then, floats to the last bit.
class LayoutComparison {
public:
    explicit LayoutComparison(std::uint64_t seed);
    LayoutComparison(const LayoutComparison&) = delete;
    LayoutComparison& operator=(const LayoutComparison&) = delete;
    virtual ~LayoutComparison();

    /// Makes one random step in both worlds and says which.
    std::string Step();
    /// What differs, or nothing.
    std::string Difference();
    /// The tree as it is now: "0(1 2(3 4))".
    std::string DescribeTree() const;

protected:
    /// One node in both worlds.
    struct Pair {
        VisReference<VisDataTree> node;
        std::unique_ptr<layoutReference::Node> twin;
        /// Detached for a while; null when they are linked or gone.
        VisTreeSpaceFillingLayoutCache* lostCache = nullptr;
        layoutReference::Cache* lostTwin = nullptr;
    };

    /// To be called at the end of a derived constructor; takes the layout's reference over.
    void Start(VisTreeSpaceFillingLayout* layout, layoutReference::Layout& model);
    /// To be called in derived destructors.
    void Stop();

    /// What only this layout can be asked; "" when there is nothing.
    virtual std::string OwnStep() { return {}; }
    /// Whether what only this layout keeps for a node is the same.
    virtual std::string OwnDifference(VisTreeSpaceFillingLayoutCache& /*cache*/,
                                      const layoutReference::Cache& /*twin*/)
    {
        return {};
    }
    virtual std::string OwnStateDifference() { return {}; }
    /// Whether an insertion may leave the remembered counts as they are.
    virtual bool AllowsQuietMoves() const { return false; }
    /// Whether single nodes may lose their caches for a while.
    virtual bool AllowsLostCaches() const { return true; }

    std::size_t Below(std::size_t bound) { return static_cast<std::size_t>(random_() % bound); }
    bool Chance(std::size_t of) { return Below(of) == 0; }
    float Fraction() { return static_cast<float>(Below(100001)) / 100000.0f; }
    Pair& AnyPair() { return pairs_[Below(pairs_.size())]; }
    KUVMathPoint2Df Origin();
    KUVMathPoint2Df Size();
    float Scale();

    /// Notes a difference between two answers.
    void Compare(const std::string& what, const std::string& module, const std::string& model);
    void Compare(const std::string& what, const KUVMathPoint2Df& module,
                 const layoutReference::Point& model);
    static bool Same(float a, float b);
    static bool Same(const KUVMathPoint2Df& a, const layoutReference::Point& b);
    static layoutReference::Point PointOf(const KUVMathPoint2Df& point)
    {
        return {point.x, point.y};
    }
    static std::string Text(float x, float y);
    static std::string Text(const KUVMathPoint2Df& point) { return Text(point.x, point.y); }
    std::string Name(const VisDataTree* node) const;
    const std::vector<Pair>& Pairs() const { return pairs_; }
    KUVCharacterFont* Font() const { return font_.Get(); }
    KUV2DBagRep* Bag() const { return bag_.Get(); }
    VisDataTree* Root() const { return pairs_.front().node.Get(); }
    layoutReference::Node* RootTwin() const { return pairs_.front().twin.get(); }
    /// Has the event written down.
    void ListenTo(const char* event, const std::string& word);
    void Hear(const std::string& text) { heard_ += text + "; "; }

private:
    void MakeTree();
    void DressNodes();
    std::string Draw();
    std::string Point();
    std::string Click();
    std::string SendDevice(const layoutReference::DeviceEvent& event);
    std::string SendOddEvent();
    std::string PressKey();
    std::string Zoom();
    std::string SelectOrHighlight();
    std::string Switch();
    std::string SetValues();
    std::string SetRoot();
    std::string Edit();
    std::string Move();
    std::string Relink();
    std::string Kill();
    std::string HitTest();
    KUVMathPoint2Df SomePlace();
    layoutReference::DeviceEvent SomeEvent();

    std::string SlotsDifference() const;
    std::string NodeDifference(const Pair& pair);
    std::string ViewDifference(VisTreeSpaceFillingView& view, const layoutReference::View& twin);

    std::mt19937_64 random_;
    std::vector<Pair> pairs_;
    std::map<const VisDataTree*, int> numbers_;
    VisReference<KUV2DBagRep> bag_;
    VisReference<KUVCharacterFont> font_;
    VisReference<core::StandaloneViewer> viewer_;
    KUVMouseDevice mouse_;
    KUVDevice otherDevice_;
    VisReference<VisTreeSpaceFillingLayout> layout_;
    layoutReference::Layout* model_ = nullptr;
    std::string heard_;
    std::string failure_;
    KUVMathPoint2Df origin_;
    KUVMathPoint2Df size_;
    bool hasDrawn_ = false;
};

#endif
