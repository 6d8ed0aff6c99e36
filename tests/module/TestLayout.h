#ifndef module_TestLayout_h
#define module_TestLayout_h

#include "TreeBuilding.h"
#include "VisTreeSpaceFillingLayout.h"
#include "VisTreeSpaceFillingLayoutCache.h"
#include "VisTreeSpaceFillingLayoutNotification.h"
#include "VisTreeSpaceFillingView.h"
#include "private/CacheAccess.h"
#include "private/Reference.h"
#include "private/TreeWalk.h"

#include "KUV2D.h"

#include <functional>
#include <new>
#include <string>
#include <utility>
#include <vector>

namespace trees {

/// The smallest layout: every node of the current root's subtree is shown in one and the same
/// rectangle. Opens what the base class keeps for derived layouts.
class TestLayout : public VisTreeSpaceFillingLayout {
public:
    explicit TestLayout(KUVCommand* parent = nullptr) : VisTreeSpaceFillingLayout(parent) {}
    TestLayout(VisDataTree* root, KUV2DBagRep* bag) : VisTreeSpaceFillingLayout(nullptr)
    {
        Init(root, bag);
    }

    using VisTreeSpaceFillingLayout::CreateView;
    using VisTreeSpaceFillingLayout::DeleteView;
    using VisTreeSpaceFillingLayout::GetBagRep;
    using VisTreeSpaceFillingLayout::GetDiscardedVisibility;
    using VisTreeSpaceFillingLayout::GetDrawScale;
    using VisTreeSpaceFillingLayout::GetFont;
    using VisTreeSpaceFillingLayout::Init;
    using VisTreeSpaceFillingLayout::OnMouseSelection;
    using VisTreeSpaceFillingLayout::ResetView;
    using VisTreeSpaceFillingLayout::ResetViewOf;
    using VisTreeSpaceFillingLayout::ResetViewsBelow;
    using VisTreeSpaceFillingLayout::SetDiscardedVisibility;

    void Draw(const KUVMathPoint2Df& position, const KUVMathPoint2Df& size, KUVCharacterFont* font,
              float scale) override
    {
        VisTreeSpaceFillingLayout::Draw(position, size, font, scale);
        ++draws;
        VisPreOrderWalk<VisDataTree> walk(GetCurrentRoot());
        while (VisDataTree* const node = walk.Next()) {
            VisTreeSpaceFillingLayoutCache* const cache = VisCacheAccess::LayoutCacheOf(node);
            if (!cache)
                continue;
            VisCacheAccess::HiddenBelow(*cache) = 0;
            VisCacheAccess::Show(*cache, 1);
            VisCacheAccess::SetPosition(*cache, position);
            VisCacheAccess::SetSize(*cache, size);
            if (VisTreeSpaceFillingView* const view = CreateView(cache))
                view->InitWithoutTexture(0, position, size);
        }
        if (selectAfterDraw)
            SetCurrentSelection(GetCurrentSelection());
    }

    KUVCallbackManager* GetCallbackManager() override
    {
        return silent ? nullptr : VisTreeSpaceFillingLayout::GetCallbackManager();
    }

    int draws = 0;
    int generated = 0;
    bool silent = false;
    bool selectAfterDraw = false;

protected:
    VisTreeSpaceFillingLayoutCache* GenerateCache() override
    {
        ++generated;
        return new (std::nothrow) VisTreeSpaceFillingLayoutCache(nullptr);
    }
};

using LayoutRef = VisReference<TestLayout>;

inline LayoutRef MakeLayout(VisDataTree* root, KUV2DBagRep* bag = nullptr)
{
    return LayoutRef::Adopt(new TestLayout(root, bag));
}

inline VisTreeSpaceFillingLayoutCache* CacheOf(const VisDataTree* node)
{
    return VisCacheAccess::LayoutCacheOf(node);
}

inline VisTreeSpaceFillingView* ViewOf(const VisDataTree* node)
{
    VisTreeSpaceFillingLayoutCache* const cache = CacheOf(node);
    return cache ? cache->GetView() : nullptr;
}

/// Writes down every notification of a layout: "select A > B; ".
class Listener {
public:
    using Answer = std::function<void(const std::string& event, VisDataTree* node)>;

    explicit Listener(TestLayout& layout, Answer answer = {}) : answer_(std::move(answer))
    {
        const std::pair<const char*, const char*> events[] = {
            {TestLayout::ON_SET_CURRENT_ROOT(), "root"},
            {TestLayout::ON_SELECT_NODE(), "select"},
            {TestLayout::ON_HOVER_NODE(), "hover"},
            {TestLayout::ON_RIGHT_CLICK_NODE(), "right"},
            {TestLayout::ON_DOUBLE_CLICK(), "double"}};
        for (const auto& [name, word] : events) {
            layout.GetCallbackManager()->Subscribe(
                name, &layout,
                [this, text = std::string(word)](const char*, KUVNotification* notification,
                                                 KUVBaseUnknown*) { Hear(text, notification); });
        }
    }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    std::string Take() { return std::exchange(record_, {}); }

private:
    static std::string NameOf(const VisDataTree* node)
    {
        return node ? node->GetLabel().GetUtf8() : "-";
    }

    void Hear(const std::string& event, KUVNotification* notification)
    {
        VisDataTree* node = nullptr;
        record_ += event;
        if (auto* const payload =
                dynamic_cast<VisTreeSpaceFillingLayoutNotification*>(notification)) {
            node = payload->GetNode();
            record_ += " " + NameOf(payload->GetPreviousNode()) + " > " + NameOf(node);
        }
        record_ += "; ";
        if (answer_)
            answer_(event, node);
    }

    std::string record_;
    Answer answer_;
};

}  // namespace trees

#endif
