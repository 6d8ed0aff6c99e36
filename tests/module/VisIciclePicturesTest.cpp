#include "VisIcicleLayout.h"

#include "module/IcicleFixture.h"
#include "module/PictureFixture.h"

#include <gtest/gtest.h>

#include <string>

using icicles::Cache;
using icicles::NO_LIMIT;
using icicles::Plot;
using pictures::ExpectPicture;
using pictures::PUMP;

namespace {

/// One line a node, indented by its level: "Seal  98,52  194x24  drawn 194x24  flat #FFFFFF
/// 'Seal'", or "hidden" behind the rectangle.
void Dump(const VisDataTree* node, std::size_t level, std::string& text)
{
    const Cache& cache = *icicles::CacheOf(node);
    text += std::string(2 * level, ' ') + pictures::DescribeRectangle(*node, cache);
    if (cache.IsDiscarded() != 0)
        text += "  hidden";
    else
        text += "  drawn " + Plot::Text(cache.GetGraphicalSize());
    text += pictures::DescribeReps(cache) + "\n";
    for (const VisDataTree* const child : node->GetChildren())
        Dump(child, level + 1, text);
}

std::string PictureOf(const Plot& plot)
{
    std::string text;
    Dump(plot.layout->GetCurrentRoot(), 0, text);
    return text;
}

/// The pump with labels, its leaves being leaf objects, aligned.
struct Pump : Plot {
    Pump() : Plot(PUMP)
    {
        ShowLabels();
        MarkLeafObjects();
        layout->AlignIciclePlotLeaves(nullptr);
    }
};

}  // namespace

TEST(VisIciclePictures, AnAssemblyInItsOwnSize)
{
    const Pump plot;
    plot.Draw();
    ExpectPicture("icicle_plain", PictureOf(plot));
}

TEST(VisIciclePictures, AnAssemblyThatFillsItsArea)
{
    const Pump plot;
    plot.Draw(800.0f, 600.0f);
    ExpectPicture("icicle_stretched", PictureOf(plot));
}

TEST(VisIciclePictures, TheTwoLastColumns)
{
    const Pump plot;
    plot.DrawLast(2);
    ExpectPicture("icicle_last_columns", PictureOf(plot));
}

TEST(VisIciclePictures, TheTwoLastColumnsBesideWhatComesFirst)
{
    const Pump plot;
    plot.DrawLast(2, /*relative=*/1);
    ExpectPicture("icicle_relative", PictureOf(plot));
}

TEST(VisIciclePictures, ASubassemblyAfterZooming)
{
    const Pump plot;
    plot.Draw();
    plot.layout->SetCurrentRoot(plot.Node("Rotor"), 1);
    ExpectPicture("icicle_zoomed", PictureOf(plot));
}

TEST(VisIciclePictures, WithoutAlignmentAndLabelsAtAnotherPlaceAndScale)
{
    const Plot plot(PUMP);
    plot.layout->Draw({10.0f, 20.0f}, {100.0f, 100.0f}, plot.font.Get(), 1.5f);
    ExpectPicture("icicle_unaligned", PictureOf(plot));
}
