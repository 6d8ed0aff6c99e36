// Operations on trees, caches and a layout, in an order taken from the input, with a listener that
// carries on with the input in the middle of notifications. What must hold is checked after every
// operation; the sanitizers watch the rest.

#include "FuzzSupport.h"
#include "LayoutChecks.h"
#include "VisDataTree.h"
#include "VisTreeSpaceFillingLayout.h"
#include "VisTreeSpaceFillingLayoutCache.h"
#include "VisTreeSpaceFillingLayoutNotification.h"
#include "VisTreeSpaceFillingView.h"
#include "private/CacheAccess.h"
#include "private/Reference.h"
#include "private/TreeWalk.h"

#include "KUV2D.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <new>
#include <stack>

namespace {

constexpr std::size_t NODES = 20;
constexpr std::size_t CACHES = 6;

using fuzz::Bytes;
using fuzz::NodeRef;
using fuzz::Require;

/// Shows every node of the current root's subtree, as deep as its value says.
class FuzzLayout : public VisTreeSpaceFillingLayout {
public:
    FuzzLayout(VisDataTree* root, KUV2DBagRep* bag) : VisTreeSpaceFillingLayout(nullptr)
    {
        Init(root, bag);
    }
    using VisTreeSpaceFillingLayout::ResetView;

    void Draw(const KUVMathPoint2Df& position, const KUVMathPoint2Df& size, KUVCharacterFont* font,
              float scale) override
    {
        const auto self = VisReference<FuzzLayout>::Retain(this);
        VisTreeSpaceFillingLayout::Draw(position, size, font, scale);
        VisPreOrderWalk<VisDataTree> walk(GetCurrentRoot());
        while (VisDataTree* const node = walk.Next()) {
            VisTreeSpaceFillingLayoutCache* const cache = VisCacheAccess::LayoutCacheOf(node);
            if (!cache || node->IsMerged() != 0) {
                if (cache)
                    ResetViewsBelow(*node, *cache);
                walk.SkipChildren();
                continue;
            }
            VisCacheAccess::HiddenBelow(*cache) = 0;
            VisCacheAccess::Show(*cache, 1);
            VisCacheAccess::SetPosition(*cache, position);
            VisCacheAccess::SetSize(*cache, size);
            if (VisTreeSpaceFillingView* const view = CreateView(cache))
                view->InitWithoutTexture(0, position, size);
        }
        SetCurrentSelection(GetCurrentSelection());
    }

protected:
    VisTreeSpaceFillingLayoutCache* GenerateCache() override
    {
        return new (std::nothrow) VisTreeSpaceFillingLayoutCache(nullptr);
    }
};

class Scenario {
public:
    Scenario(const std::uint8_t* data, std::size_t size) : bytes_(data, size)
    {
        for (auto& node : nodes_)
            node = MakeNode();
        for (auto& cache : caches_)
            cache = std::make_unique<VisDataTree::VisDataTreeCache>(nullptr);
    }
    Scenario(const Scenario&) = delete;
    Scenario& operator=(const Scenario&) = delete;
    ~Scenario()
    {
        layout_ = {};
        for (const auto& cache : caches_)
            Detach(*cache);
    }

    void Run()
    {
        while (!bytes_.AtEnd()) {
            Step();
            Check();
        }
    }

private:
    static NodeRef MakeNode() { return NodeRef::Adopt(new fuzz::Node); }

    VisDataTree* TakeNode()
    {
        const unsigned int index = bytes_.Take() % (NODES + 1);
        return index < NODES ? nodes_[index].Get() : nullptr;
    }
    VisDataTree* TakeSomeNode() { return nodes_[bytes_.Take() % NODES].Get(); }
    VisDataTree::VisDataTreeCache& TakeCache() { return *caches_[bytes_.Take() % CACHES]; }

    static void Detach(VisDataTree::VisDataTreeCache& cache)
    {
        if (cache.GetNode())
            cache.GetNode()->SetCache(nullptr);
    }

    void Step()
    {
        const unsigned int operation = bytes_.Take() % 32;
        if (operation < 10)
            StepOfTree(operation);
        else if (operation < 18)
            StepOfCache(operation);
        else
            StepOfLayout(operation);
    }

    void StepOfTree(unsigned int operation);
    void StepOfCache(unsigned int operation);
    void StepOfLayout(unsigned int operation);
    void Replace(NodeRef& node);
    void MakeLayout();
    void Check();

    fuzz::LeakCheck leaks_;
    Bytes bytes_;
    std::array<NodeRef, NODES> nodes_;
    std::array<std::unique_ptr<VisDataTree::VisDataTreeCache>, CACHES> caches_;
    VisReference<KUV2DBagRep> bag_ = VisReference<KUV2DBagRep>::Adopt(KUV2DBagRep::CreateRep());
    VisReference<FuzzLayout> layout_;
    int nesting_ = 0;
};

void Scenario::StepOfTree(unsigned int operation)
{
    VisDataTree* const node = TakeSomeNode();
    switch (operation) {
    case 0:
    case 1:
    case 2:
        node->InsertChild(TakeNode(), operation % 2);
        break;
    case 3:
        node->RemoveParent(1);
        break;
    case 4:
        if (node->GetParent()) {
            node->RemoveParent(0);
            node->Release();
        }
        break;
    case 5: {
        const unsigned char merge = bytes_.TakeFlag();
        node->UpdateMerge(merge, bytes_.TakeFlag());
        break;
    }
    case 6:
        node->SetIsMergeable(bytes_.Take() % 2);
        break;
    case 7:
        Require(node->ComputeMaxDepth() != 0);
        Require(node->ComputeNumberOfLeaves() != 0);
        break;
    case 8: {
        const VisDataTree* const next = node->NextLeafNodeInHierarchy(TakeNode());
        Require((next == nullptr) != node->GetChildren().empty());
        Require(!node->ComputeLabelUptoRoot(bytes_.Take() % 2).IsEmpty());
        break;
    }
    default:
        Replace(nodes_[bytes_.Take() % NODES]);
        break;
    }
}

/// Gives the node up, for a new one in its place; it dies unless it has a parent or is the tree of
/// the layout.
void Scenario::Replace(NodeRef& node)
{
    for (const auto& cache : caches_) {
        if (cache->GetNode() == node.Get())
            Detach(*cache);
    }
    node->RemoveParent(1);
    node = MakeNode();
}

void Scenario::StepOfCache(unsigned int operation)
{
    VisDataTree::VisDataTreeCache& cache = TakeCache();
    const auto value = static_cast<unsigned char>(bytes_.Take());
    switch (operation) {
    case 10:
        Detach(cache);
        TakeSomeNode()->SetCache(&cache);
        break;
    case 11:
        Detach(cache);
        break;
    case 12:
        cache.SetColorWithValue(value);
        break;
    case 13:
        cache.SetResizeWithValue(value);
        break;
    case 14:
        cache.DoNotUseValue();
        break;
    case 15:
        cache.ResetCache();
        break;
    case 16:
        cache.SetSizeValue(static_cast<long long>(value) * 0x0123456789ABCDLL);
        cache.SetColorValue(-static_cast<long long>(value));
        cache.GetLabelToDisplay(static_cast<VisDataTree_ApplyValueTo>(value % 4));
        cache.GetRGBAColor(static_cast<signed char>(value), TakeNode());
        break;
    default:
        if (VisTreeSpaceFillingLayoutCache* const own = VisCacheAccess::LayoutCacheOf(TakeNode())) {
            const std::unique_ptr<VisDataTree::VisDataTreeCache> clone(own->Clone());
            own->SetResizeWithValue(value);
        }
        break;
    }
}

void Scenario::MakeLayout()
{
    layout_ = {};
    layout_ = VisReference<FuzzLayout>::Adopt(new FuzzLayout(TakeSomeNode(), bag_.Get()));
    const auto answer = [this](const char*, KUVNotification* notification, KUVBaseUnknown*) {
        auto* const payload = dynamic_cast<VisTreeSpaceFillingLayoutNotification*>(notification);
        Require(payload != nullptr);
        for (const VisDataTree* const node : {payload->GetPreviousNode(), payload->GetNode()})
            Require(!node || fuzz::Node::Lives(node));
        Require(++nesting_ <= 64);
        if (bytes_.Take() % 4 == 1)
            Step();
        --nesting_;
    };
    for (const char* const name : {FuzzLayout::ON_SELECT_NODE(), FuzzLayout::ON_HOVER_NODE(),
                                   FuzzLayout::ON_SET_CURRENT_ROOT()})
        layout_->GetCallbackManager()->Subscribe(name, nullptr, answer);
}

void Scenario::StepOfLayout(unsigned int operation)
{
    if (!layout_ || operation == 18) {
        // Listeners are counted a layout: only the outermost step makes another.
        if (nesting_ == 0)
            MakeLayout();
        else
            layout_ = {};
        return;
    }
    switch (operation) {
    case 19:
        layout_ = {};
        break;
    case 20:
        layout_->SetTreeRoot(TakeNode());
        break;
    case 21:
    case 22:
    case 23:
        layout_->SetCurrentRoot(TakeNode(), operation % 2);
        break;
    case 24:
        layout_->Unzoom();
        break;
    case 25:
    case 26:
        layout_->SetCurrentSelection(TakeNode());
        break;
    case 27:
        layout_->SetCurrentHighlightedNode(TakeNode());
        break;
    case 28:
        layout_->ResetView(VisCacheAccess::LayoutCacheOf(TakeNode()));
        break;
    case 29:
        layout_->EmptyStackOfLastTreeRoots();
        break;
    case 30: {
        std::stack<VisDataTree*> roots = layout_->GetLastCurrentTreeRoots();
        roots.push(TakeSomeNode());
        layout_->ReplaceLastCurrentTreeRoots(roots);
        break;
    }
    default:
        layout_->Draw({0, 0}, {10, 10}, nullptr, 1);
        break;
    }
}

void Scenario::Check()
{
    for (const NodeRef& node : nodes_)
        fuzz::CheckNode(*node.Get());
    for (const auto& cache : caches_)
        Require(!cache->GetNode() || cache->GetNode()->GetCache() == cache.get());
    if (layout_)
        fuzz::CheckSlots(*layout_.Get(), /*inTree=*/false);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Scenario(data, size).Run();
    return 0;
}
