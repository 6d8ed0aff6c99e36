#include "VisTreeMapLayout.h"

#include "module/TreeMapFixture.h"

#include <gtest/gtest.h>

#include <string>

// Hosts can reach the caches of a shown tree, copy one onto another and link them to nodes of their
// own. Whatever they do, drawing goes on and nothing that is gone is touched.

using treemaps::Cache;
using treemaps::Map;
using treemaps::THREE_LEAVES;

namespace {

const support::TreeSketch TWO_LEVELS = {"R", {{"A", {{"a"}, {"b"}}}, {"B"}}};

/// A font whose every request is written down.
class ListeningFont : public KUVCharacterFont {
public:
    int GetFontIndex(float /*size*/) override { return 0; }
    void GetStringSize(const KUVUnicodeString& text, int* width, int* height, int* descent,
                       int /*fontIndex*/) override
    {
        asked += text.GetUtf8();
        for (int* const result : {width, height, descent}) {
            if (result)
                *result = 1;
        }
    }

    std::string asked;
};

}  // namespace

TEST(VisTreeMapLayoutForeignLinks, ACacheThatForgotItsNodeIsDrawnWithoutLabel)
{
    const Map map(THREE_LEAVES);
    map.Draw(200.0f, 100.0f);
    *map.Of("1") = *map.Of("2");
    ASSERT_EQ(map.Of("1")->GetNode(), nullptr);
    map.Draw(300.0f, 100.0f);
    EXPECT_TRUE(map.Shows("1"));
    EXPECT_EQ(map.Of("1")->GetSize().x, map.Of("0")->GetSize().x);
}

TEST(VisTreeMapLayoutForeignLinks, ANodeWhoseCacheForgotItIsCollapsedAndItsChildrenAreHidden)
{
    const Map map(TWO_LEVELS);
    map.Draw(600.0f, 300.0f);
    ASSERT_TRUE(map.Shows("a"));
    *map.Of("A") = *map.Of("B");
    map.Draw(600.0f, 300.0f);
    EXPECT_TRUE(map.Shows("A"));
    EXPECT_FALSE(map.Shows("a")) << "no ghost of what was shown before";
    EXPECT_NE(map.Of("a")->IsDiscarded(), 0);
}

TEST(VisTreeMapLayoutForeignLinks, ZoomingAwayFromARootWhoseCacheForgotItHidesItWhole)
{
    const Map map(TWO_LEVELS);
    map.Draw(600.0f, 300.0f);
    *map.Root() = *map.Of("B");
    map.layout->SetCurrentRoot(map.Node("B"), 1);
    EXPECT_FALSE(map.Shows("R"));
    EXPECT_FALSE(map.Shows("A"));
    EXPECT_FALSE(map.Shows("a"));
    EXPECT_TRUE(map.Shows("B"));
}

TEST(VisTreeMapLayoutForeignLinks, ANodeThatLeftTheTreeAfterItsCacheForgotItMayDieAfterTheCache)
{
    const Map map(THREE_LEAVES);
    VisDataTree* const node = map.Node("1");
    *map.Of("1") = *map.Of("2");
    node->RemoveParent(/*release=*/0);
    map.layout->SetTreeRoot(nullptr);
    node->Release();
    EXPECT_EQ(map.root->GetChildren().size(), 2U);
}

TEST(VisTreeMapLayoutForeignLinks, ANodeThatTookALayoutsCacheMayDieBeforeTheLayout)
{
    const Map map(THREE_LEAVES);
    Cache* const cache = map.Of("1");
    auto* const foreign = new VisDataTree(nullptr, "foreign", "");
    foreign->SetCache(cache);
    ASSERT_EQ(cache->GetNode(), foreign);
    foreign->Release();
    map.layout->SetTreeRoot(nullptr);
    EXPECT_EQ(map.Node("1")->GetCache(), nullptr);
}

TEST(VisTreeMapLayoutForeignLinks, ANodeIsBuiltBehindItsChildren)
{
    const Map map(TWO_LEVELS);
    const auto font = VisReference<ListeningFont>::Adopt(new ListeningFont);
    map.layout->Draw({0.0f, 0.0f}, {600.0f, 300.0f}, font.Get(), 1.0f);
    EXPECT_EQ(font->asked, "abABR");
}

TEST(VisTreeMapLayoutForeignLinks, ALeafBelowItsMinimumSizeIsStillDrawnFlat)
{
    const Map map({"R", {}});
    map.Draw(10.0f, 5.0f);
    EXPECT_NE(map.Root()->IsExpanded(), 0);
    EXPECT_EQ(map.Roles("R").substr(0, 4), "fill");
    EXPECT_EQ(map.Root()->ComputeMinimumExpandedSize(treemaps::STACKED).x, 32.0f);
    EXPECT_EQ(map.Root()->ComputeMinimumExpandedSize(treemaps::STACKED).y, 15.0f);
}
