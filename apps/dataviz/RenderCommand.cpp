#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>
#include <optional>

#include "Commands.h"
#include "EventScript.h"
#include "FileWriting.h"
#include "GeometryJson.h"
#include "HtmlPage.h"
#include "InputTree.h"
#include "Picture.h"

#include "core/MeasuringFont.h"
#include "paint/PaintSession.h"
#include "paint/Picture.h"

namespace dataviz {

namespace {

struct ReleaseObject {
    void operator()(KUVBaseUnknown* object) const { object->Release(); }
};

constexpr KUVColor ICICLE_BACKGROUND{190, 198, 205, 255};

/// What to do about a picture that is too large for its format.
std::string WaysOut(const RenderOptions& options)
{
    return options.layout == "icicle" ? "; write SVG, or show less with --last-columns or --root"
                                      : "; write SVG, or show less with --root";
}

std::string PaintTo(const std::string& path, const Picture& picture, const RenderOptions& options)
{
    // The painter measures pixels with int.
    const auto [width, height] = PixelSizeOf(options);
    constexpr double LARGEST = 2147483647.0;
    if (width > LARGEST || height > LARGEST)
        return "the picture would be wider or higher than 2147483647 pixels";
    if (width < 1 || height < 1)
        return "the picture would have less than one pixel";
    paint::PictureOptions wanted;
    wanted.width = static_cast<int>(width);
    wanted.height = static_cast<int>(height);
    // A contour of one pixel is lost in a picture for a dense screen.
    wanted.lineWidth = static_cast<int>(std::round(std::clamp(options.scale, 1.0f, 64.0f)));
    wanted.fontFamily = options.font == "none" ? std::string() : options.font;
    // An icicle plot is made of white rectangles with narrow gaps between them.
    if (options.layout == "icicle")
        wanted.background = ICICLE_BACKGROUND;
    paint::PictureFormat format = paint::PictureFormat::Png;
    if (options.format == PictureFileFormat::Svg)
        format = paint::PictureFormat::Svg;
    else if (options.format == PictureFileFormat::Pdf)
        format = paint::PictureFormat::Pdf;
    std::optional<HtmlPage> page;
    if (options.format == PictureFileFormat::Html) {
        format = paint::PictureFormat::SvgElement;
        page.emplace(picture, options, wanted.width, wanted.height);
        wanted.groupStart = [&page](const KUV2DBagRep& bag) { return page->GroupStart(bag); };
    }
    std::string bytes;
    std::string problem = paint::PaintPicture(picture.Scene(), wanted, format, bytes);
    const bool isTooLarge =
        wanted.width > paint::MAX_PNG_SIDE || wanted.height > paint::MAX_PNG_SIDE;
    if (!problem.empty() && isTooLarge)
        problem += WaysOut(options);
    if (problem.empty() && page)
        bytes = page->Around(bytes);
    if (problem.empty()) {
        problem = WriteFile(
            path, [&](std::FILE* file) { std::fwrite(bytes.data(), 1, bytes.size(), file); });
    }
    return problem;
}

std::unique_ptr<core::MeasuringFont, ReleaseObject> FontOf(const RenderOptions& options,
                                                           WorkChannel& channel)
{
    if (options.font == "none")
        return nullptr;
    std::string remark;
    std::unique_ptr<core::MeasuringFont, ReleaseObject> font(paint::MakeFont(options.font, remark));
    if (!remark.empty())
        channel.Warn(remark);
    return font;
}

/// Writes what the options ask for; the text says why it could not be written.
std::string WriteOutput(const std::string& path, const Picture& picture,
                        const RenderOptions& options)
{
    if (options.format == PictureFileFormat::Json)
        return WriteFile(path, [&](std::FILE* file) { WriteGeometry(picture, options, file); });
    return PaintTo(path, picture, options);
}

}  // namespace

void RunRender(const RenderOptions& options, const std::string& outputFile, WorkChannel& channel)
{
    // What is wrong with the events is said before a large model is read.
    EventScript script;
    InputTree tree;
    std::optional<Failure> failure = script.Load(options.events);
    if (!failure)
        failure = tree.Load(options.input, options.model, channel);
    if (!failure)
        failure = script.CheckNodes(tree.Nodes().size());
    if (failure) {
        channel.Fail(*failure);
        return;
    }
    channel.InputIsRead();
    channel.Progress("loading fonts", -1);
    const paint::PaintSession session;
    const auto font = FontOf(options, channel);
    channel.Progress("laying out", -1);
    Picture picture(tree, options);
    picture.Draw(font.get());
    if (const std::optional<std::string> remark = picture.TooSmall())
        channel.Say(*remark);
    for (const std::string& remark : options.withoutEffect)
        channel.Say(remark);
    if (options.isColorIndexGiven && options.layout == "cushion" && !tree.IsModel())
        channel.Say("--color-index is for models: a tree file brings colours of its own");
    if (!script.Events().empty()) {
        picture.Play(script.Events(),
                     [&](double fraction) { channel.Progress("playing events", fraction); });
    }
    channel.Progress("writing", -1);
    const std::string problem = WriteOutput(outputFile, picture, picture.Options());
    if (problem.empty())
        channel.Finish(0);
    else
        channel.Fail({options.output, problem});
}

}  // namespace dataviz
