#include "VisTreeMapLayout.h"

#include "module/PictureFixture.h"
#include "module/TreeMapFixture.h"

#include <gtest/gtest.h>

#include <string>

using pictures::ExpectPicture;
using pictures::PUMP;
using treemaps::Map;
using treemaps::SIDE_BY_SIDE;

namespace {

std::string PictureOf(const Map& map)
{
    std::string text;
    pictures::Dump(map.layout->GetCurrentRoot(), 0, text);
    return text;
}

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
