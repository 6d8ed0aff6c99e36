#include "VisTreeMapLayout.h"

#include "module/TreeMapFixture.h"

#include "private/CacheAccess.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

// Whole pictures as text, compared with the files in tests/pictures. scripts/rebaseline writes the
// files anew; their difference is then reviewed like any other change.

using treemaps::Map;
using treemaps::SIDE_BY_SIDE;

namespace {

std::string Number(float value)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.6g", static_cast<double>(value));
    return text;
}

/// One line a shown node, indented by its level: "Housing  1,20  47.06x15  flat #0088DE 'Hou...'".
void Dump(const VisDataTree* node, std::size_t level, std::string& text)
{
    const VisTreeSpaceFillingLayoutCache& cache = *VisCacheAccess::LayoutCacheOf(node);
    if (!cache.GetView())
        return;
    text += std::string(2 * level, ' ') + node->GetLabel().GetUtf8() + "  " +
            Number(cache.GetPos().x) + "," + Number(cache.GetPos().y) + "  " +
            Number(cache.GetSize().x) + "x" + Number(cache.GetSize().y);
    for (const KUVRep* const child : viewreading::ChildrenOf(cache.GetView()->GetBagRep())) {
        const std::string role = viewreading::RoleOf(*child);
        if (role == "fill") {
            const viewreading::Bytes colour =
                viewreading::ColourOf(static_cast<const KUV2DPolygonRep&>(*child));
            char hex[16];
            std::snprintf(hex, sizeof hex, "#%02X%02X%02X", colour[0], colour[1], colour[2]);
            text += std::string("  flat ") + hex;
        } else if (role == "label") {
            text += std::string("  '") +
                    static_cast<const KUV2DAnnotationTextRep&>(*child).GetText().GetUtf8() + "'";
        } else {
            text += "  " + role;
        }
    }
    text += "\n";
    for (const VisDataTree* const child : node->GetChildren())
        Dump(child, level + 1, text);
}

std::string PictureOf(const Map& map)
{
    std::string text;
    Dump(map.layout->GetCurrentRoot(), 0, text);
    return text;
}

/// Compares with the file, or writes it when the environment asks for that.
void ExpectPicture(const std::string& name, const std::string& picture)
{
    const std::string path = std::string(KUV_SOURCE_DIR) + "/tests/pictures/" + name + ".txt";
    if (std::getenv("KUV_REBASELINE")) {
        std::ofstream(path) << picture;
        return;
    }
    std::ifstream file(path);
    ASSERT_TRUE(file) << path << " is missing: scripts/rebaseline writes it";
    std::ostringstream expected;
    expected << file.rdbuf();
    EXPECT_EQ(picture, expected.str()) << "after a deliberate change: scripts/rebaseline";
}

const support::TreeSketch PUMP = {
    "Pump",
    {{"Housing", {{"Upper half"}, {"Lower half"}, {"Flange", {{"Bolt"}, {"Bolt"}, {"Bolt"}}}}},
     {"Rotor",
      {{"Shaft", {{"Key"}, {"Bearing seat"}}},
       {"Impeller", {{"Blade 1"}, {"Blade 2"}, {"Blade 3"}, {"Blade 4"}, {"Hub"}}}}},
     {"Seal"},
     {"Motor with a long name", {{"Stator"}, {"Winding"}}}}};

}  // namespace

TEST(VisTreeMapPictures, AnAssemblyWithRoomForAll)
{
    const Map map(PUMP);
    map.Draw(800.0f, 600.0f);
    ExpectPicture("tree_map_roomy", PictureOf(map));
}

TEST(VisTreeMapPictures, AnAssemblyThatIsPartlyCollapsed)
{
    const Map map(PUMP);
    map.Draw(260.0f, 180.0f);
    ExpectPicture("tree_map_narrow", PictureOf(map));
}

TEST(VisTreeMapPictures, AnAssemblyWhoseFirstLevelIsAGrid)
{
    const Map map(PUMP);
    map.Draw(120.0f, 60.0f);
    ExpectPicture("tree_map_grid", PictureOf(map));
}

TEST(VisTreeMapPictures, AnAssemblyThatIsCollapsedAsAWhole)
{
    const Map map(PUMP);
    map.Draw(60.0f, 40.0f);
    ExpectPicture("tree_map_collapsed", PictureOf(map));
}

TEST(VisTreeMapPictures, ASubassemblyAfterZooming)
{
    const Map map(PUMP);
    map.Draw(400.0f, 300.0f);
    map.layout->SetCurrentRoot(map.Node("Rotor"), 1);
    ExpectPicture("tree_map_zoomed", PictureOf(map));
}

TEST(VisTreeMapPictures, AnAssemblyBeginningSideBySide)
{
    const Map map(PUMP);
    map.Root()->SetLastModeOfComputedMinimumExpandedSize(SIDE_BY_SIDE);
    map.Draw(800.0f, 300.0f, 1.5f);
    ExpectPicture("tree_map_side_by_side", PictureOf(map));
}
