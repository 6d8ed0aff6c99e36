#ifndef module_PictureFixture_h
#define module_PictureFixture_h

// Whole pictures as text, compared with the files in tests/pictures. scripts/rebaseline writes the
// files anew; their difference is then reviewed like any other change.

#include "VisTreeSpaceFillingView.h"

#include "module/ViewReading.h"

#include "private/CacheAccess.h"

#include "support/TreeBuilders.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

namespace pictures {

inline std::string Number(float value)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.6g", static_cast<double>(value));
    return text;
}

/// "Housing  1,20  47.06x15": label, position and size.
inline std::string DescribeRectangle(const VisDataTree& node,
                                     const VisTreeSpaceFillingLayoutCache& cache)
{
    return node.GetLabel().GetUtf8() + std::string("  ") + Number(cache.GetPos().x) + "," +
           Number(cache.GetPos().y) + "  " + Number(cache.GetSize().x) + "x" +
           Number(cache.GetSize().y);
}

/// What stands in the node's view, bottom to top: "  flat #0088DE  'Hou...'".
inline std::string DescribeReps(const VisTreeSpaceFillingLayoutCache& cache)
{
    std::string text;
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
    return text;
}

/// One line a shown node, indented by its level.
inline void Dump(const VisDataTree* node, std::size_t level, std::string& text)
{
    const VisTreeSpaceFillingLayoutCache& cache = *VisCacheAccess::LayoutCacheOf(node);
    if (!cache.GetView())
        return;
    text +=
        std::string(2 * level, ' ') + DescribeRectangle(*node, cache) + DescribeReps(cache) + "\n";
    for (const VisDataTree* const child : node->GetChildren())
        Dump(child, level + 1, text);
}

/// Compares with the file, or writes it when the environment asks for that.
inline void ExpectPicture(const std::string& name, const std::string& picture)
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

inline const support::TreeSketch PUMP = {
    "Pump",
    {{"Housing", {{"Upper half"}, {"Lower half"}, {"Flange", {{"Bolt"}, {"Bolt"}, {"Bolt"}}}}},
     {"Rotor",
      {{"Shaft", {{"Key"}, {"Bearing seat"}}},
       {"Impeller", {{"Blade 1"}, {"Blade 2"}, {"Blade 3"}, {"Blade 4"}, {"Hub"}}}}},
     {"Seal"},
     {"Motor with a long name", {{"Stator"}, {"Winding"}}}}};

}  // namespace pictures

#endif
