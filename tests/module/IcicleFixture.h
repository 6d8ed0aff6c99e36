#ifndef module_IcicleFixture_h
#define module_IcicleFixture_h

#include "TreeBuilding.h"
#include "VisIcicleLayout.h"
#include "VisTreeSpaceFillingLayoutNotification.h"
#include "VisTreeSpaceFillingView.h"

#include "module/ViewReading.h"

#include "private/Reference.h"
#include "private/TreeWalk.h"

#include "support/FixedWidthFont.h"
#include "support/TreeBuilders.h"

#include "KUV2D.h"
#include "KUVEvents.h"

#include <cstdio>
#include <functional>
#include <string>
#include <utility>

namespace icicles {

using Cache = VisIcicleLayout::VisIcicleLayoutCache;
using BagRef = VisReference<KUV2DBagRep>;
using FontRef = VisReference<KUVCharacterFont>;

constexpr unsigned int NO_LIMIT = 0xFFFFFFFF;
constexpr unsigned int NOT_COMPUTED = 0xFFFFFFFF;

constexpr unsigned int UP = 0x800000;
constexpr unsigned int LEFT = 0x900000;
constexpr unsigned int DOWN = 0xA00000;
constexpr unsigned int RIGHT = 0xB00000;
constexpr unsigned int FEWER = 0x700000;
constexpr unsigned int MORE = 0x400000;

/// Opens what the layout keeps for derived classes.
class OpenLayout : public VisIcicleLayout {
public:
    OpenLayout(KUVCommand* parent, VisDataTree* root, KUV2DBagRep* bag)
        : VisIcicleLayout(parent, root, bag)
    {
    }
    using VisIcicleLayout::GenerateCache;
    using VisIcicleLayout::GetNodeViaNavigation;
    using VisIcicleLayout::OnMouseSelection;
    using VisTreeSpaceFillingLayout::GetDiscardedVisibility;
};

using LayoutRef = VisReference<OpenLayout>;

/// Opens what the cache keeps for derived classes.
struct OpenCache : Cache {
    using Cache::Cache;
    using Cache::InternalResetCache;
};

inline Cache* CacheOf(const VisDataTree* node) { return static_cast<Cache*>(node->GetCache()); }

/// A tree, its icicle plot and what it draws into.
struct Plot {
    explicit Plot(const support::TreeSketch& tree)
        : root(trees::NodeRef::Adopt(support::MakeTree(tree))),
          bag(BagRef::Adopt(KUV2DBagRep::CreateRep())),
          font(FontRef::Adopt(support::MakeFixedWidthFont())),
          layout(LayoutRef::Adopt(new OpenLayout(nullptr, root.Get(), bag.Get())))
    {
    }

    VisDataTree* Node(const char* label) const { return support::FindNode(root.Get(), label); }
    Cache* Of(const char* label) const { return CacheOf(Node(label)); }
    Cache* Root() const { return CacheOf(root.Get()); }

    void ForEach(const std::function<void(VisDataTree&)>& visit) const
    {
        VisPreOrderWalk<VisDataTree> walk(root.Get());
        while (VisDataTree* const node = walk.Next())
            visit(*node);
    }
    void ShowLabels() const
    {
        ForEach([](VisDataTree& node) { CacheOf(&node)->SetShowLabel(1); });
    }
    void MarkLeafObjects() const
    {
        ForEach(
            [](VisDataTree& node) { node.SetIsLeafObject(node.GetChildren().empty() ? 1 : 0); });
    }
    void GiveIcons(const char* icon) const
    {
        ForEach([icon](VisDataTree& node) { node.SetIconName(icon); });
    }

    void Draw(float width = 1.0f, float height = 1.0f, float scale = 1.0f) const
    {
        layout->Draw({0.0f, 0.0f}, {width, height}, font.Get(), scale);
    }
    unsigned int DrawLast(unsigned int columns, unsigned char relative = 0,
                          unsigned char inlineLabels = 0) const
    {
        return layout->IciclePlot({0.0f, 0.0f}, {1.0f, 1.0f}, font.Get(), columns, 1.0f, relative,
                                  inlineLabels);
    }
    /// What the node's view shows, bottom to top.
    std::string Roles(const char* label) const
    {
        return viewreading::Roles(Of(label)->GetView()->GetBagRep());
    }
    /// "x,y wxh" of a node.
    std::string Rectangle(const char* label) const
    {
        char text[64];
        const Cache& cache = *Of(label);
        std::snprintf(text, sizeof text, "%.6g,%.6g %.6gx%.6g",
                      static_cast<double>(cache.GetPos().x), static_cast<double>(cache.GetPos().y),
                      static_cast<double>(cache.GetSize().x),
                      static_cast<double>(cache.GetSize().y));
        return text;
    }
    /// "wxh" of the rectangle that is drawn.
    std::string Drawn(const char* label) const { return Text(Of(label)->GetGraphicalSize()); }
    static std::string Text(const KUVMathPoint2Df& size)
    {
        char text[64];
        std::snprintf(text, sizeof text, "%.6gx%.6g", static_cast<double>(size.x),
                      static_cast<double>(size.y));
        return text;
    }

    unsigned int Key(unsigned int code) const
    {
        KUVKeybdEvent event(code, 1);
        return layout->KeyboardAction(&event);
    }
    void Select(const char* label) const { layout->SetCurrentSelection(Node(label)); }
    std::string Selected() const
    {
        const VisDataTree* const selection = layout->GetCurrentSelection();
        return selection ? selection->GetLabel().GetUtf8() : "-";
    }

    trees::NodeRef root;
    BagRef bag;
    FontRef font;
    LayoutRef layout;
};

/// Writes down the notifications of a layout: "select A > B; columns 3 > 2 700000; ".
class Listener {
public:
    using Answer = std::function<void(const std::string& event)>;

    explicit Listener(VisIcicleLayout& layout, Answer answer = {}) : answer_(std::move(answer))
    {
        const std::pair<const char*, const char*> events[] = {
            {VisIcicleLayout::ON_SET_CURRENT_ROOT(), "root"},
            {VisIcicleLayout::ON_SELECT_NODE(), "select"},
            {VisIcicleLayout::ON_HOVER_NODE(), "hover"},
            {VisIcicleLayout::ON_SET_NLAST_NODES(), "columns"}};
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
    static std::string NumberOf(unsigned int columns)
    {
        return columns == NO_LIMIT ? "all" : std::to_string(columns);
    }

    void Hear(const std::string& event, const KUVNotification* notification)
    {
        record_ += event;
        if (const auto* const nodes =
                dynamic_cast<const VisTreeSpaceFillingLayoutNotification*>(notification)) {
            record_ += " " + NameOf(nodes->GetPreviousNode()) + " > " + NameOf(nodes->GetNode());
        } else if (const auto* const columns =
                       dynamic_cast<const VisIcicleLayoutON_SET_NLAST_NODESEvt*>(notification)) {
            char key[16];
            std::snprintf(key, sizeof key, " %x", columns->GetKeyCode());
            record_ += " " + NumberOf(columns->GetOldValue()) + " > " +
                       NumberOf(columns->GetNewValue()) + key;
        }
        record_ += "; ";
        if (answer_)
            answer_(event);
    }

    std::string record_;
    Answer answer_;
};

//  +------+------+------+  R and A take one column each, B stretches over two, C over two with its
//  |      |  A   |  a1  |  leaf c in the last: the leaves a1, a2, B and c end in the same column.
//  |  R   |      |  a2  |
//  |      +------+------+
//  |      |      B      |
//  |      +------+------+
//  |      |  C   |   c  |
//  +------+------+------+
inline const support::TreeSketch SHALLOW_AND_DEEP = {
    "R", {{"A", {{"a1"}, {"a2"}}}, {"B"}, {"C", {{"c"}}}}};

}  // namespace icicles

#endif
