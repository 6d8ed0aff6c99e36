#include "Options.h"

#include <gtest/gtest.h>

namespace dataviz {

namespace {

CommandLine Parse(std::vector<const char*> words)
{
    words.insert(words.begin(), "dataviz");
    return ParseCommandLine(static_cast<int>(words.size()), words.data());
}

RenderOptions Render(std::vector<const char*> words)
{
    words.insert(words.begin(), "render");
    const CommandLine command = Parse(std::move(words));
    const auto* const answer = std::get_if<Answer>(&command);
    EXPECT_EQ(answer, nullptr) << answer->text;
    return answer != nullptr ? RenderOptions() : std::get<RenderOptions>(command);
}

/// The error line of a command line that must be refused with status 2.
std::string UsageError(std::vector<const char*> words)
{
    const CommandLine command = Parse(std::move(words));
    const auto* const answer = std::get_if<Answer>(&command);
    if (answer == nullptr)
        return "accepted";
    EXPECT_EQ(answer->status, 2);
    EXPECT_EQ(answer->text.rfind("dataviz: ", 0), 0u) << answer->text;
    EXPECT_EQ(answer->text.find('\n'), answer->text.size() - 1) << "one line: " << answer->text;
    return answer->text.substr(9, answer->text.size() - 10);
}

}  // namespace

TEST(Options, GiveRenderItsDefaults)
{
    const RenderOptions options = Render({"in.step", "-o", "out.png"});
    EXPECT_EQ(options.input, "in.step");
    EXPECT_EQ(options.output, "out.png");
    EXPECT_EQ(options.format, PictureFileFormat::Png);
    EXPECT_EQ(options.layout, "treemap");
    EXPECT_EQ(options.width, 1280u);
    EXPECT_EQ(options.height, 800u);
    EXPECT_EQ(options.originX, 0.0F);
    EXPECT_EQ(options.originY, 0.0F);
    EXPECT_EQ(options.scale, 1.0F);
    EXPECT_EQ(options.font, "");
    EXPECT_FALSE(options.noLabels || options.resizeByValue || options.colorByValue);
    EXPECT_EQ(options.progress, ProgressMode::WhenTerminal);
    EXPECT_FALSE(options.model.primitives || options.model.wholeReps);
    EXPECT_EQ(options.model.meshQuality, "normal");
    EXPECT_EQ(options.model.linearDeflection, 0.004);
    EXPECT_EQ(options.model.angularDeflection, 20.0);
    EXPECT_EQ(options.model.memoryLimit, 16384u);
    EXPECT_EQ(options.model.timeLimit, 3600u);
}

TEST(Options, TakeValuesBehindAnEqualSignAndAsTheNextWord)
{
    const RenderOptions options =
        Render({"--size=640x480", "in", "--output=a.svg", "--origin", "-5,2.5", "--scale", "2",
                "--memory-limit=100", "--time-limit", "9"});
    EXPECT_EQ(options.width, 640u);
    EXPECT_EQ(options.height, 480u);
    EXPECT_EQ(options.originX, -5.0F);
    EXPECT_EQ(options.originY, 2.5F);
    EXPECT_EQ(options.scale, 2.0F);
    EXPECT_EQ(options.format, PictureFileFormat::Svg);
    EXPECT_EQ(options.model.memoryLimit, 100u);
    EXPECT_EQ(options.model.timeLimit, 9u);
}

TEST(Options, TakeEveryFlag)
{
    const RenderOptions options =
        Render({"in", "-o", "a.pdf", "--no-labels", "--resize-by-value", "--color-by-value",
                "--quiet", "--primitives", "--whole-reps", "--mesh-quality", "very-fine",
                "--linear-deflection", "0.01", "--angular-deflection", "5", "--font", "none"});
    EXPECT_TRUE(options.noLabels && options.resizeByValue && options.colorByValue);
    EXPECT_TRUE(options.model.primitives && options.model.wholeReps);
    EXPECT_EQ(options.model.meshQuality, "very-fine");
    EXPECT_EQ(options.model.linearDeflection, 0.01);
    EXPECT_EQ(options.model.angularDeflection, 5.0);
    EXPECT_EQ(options.font, "none");
    EXPECT_EQ(options.progress, ProgressMode::Never);
    EXPECT_EQ(Render({"in", "-o", "a.pdf", "--progress"}).progress, ProgressMode::Always);
}

TEST(Options, FindTheFormatInTheNameOrTakeTheOneGiven)
{
    EXPECT_EQ(Render({"in", "-o", "A.JSON"}).format, PictureFileFormat::Json);
    EXPECT_EQ(Render({"in", "-o", "a.png", "--format", "svg"}).format, PictureFileFormat::Svg);
    EXPECT_EQ(Render({"-", "-o", "-", "--format", "pdf"}).format, PictureFileFormat::Pdf);
    EXPECT_EQ(UsageError({"render", "in", "-o", "-"}),
              "--format is needed to write to standard output");
    EXPECT_EQ(UsageError({"render", "in", "-o", "a.bmp"}),
              "a.bmp: the name does not end in .png, .svg, .pdf, .json or .html; give --format");
}

TEST(Options, RefuseSizesThatAreNotWholeNumbersOfAtLeastOne)
{
    for (const char* const size : {"0x5", "5x0", "-5x5", "5.5x5", "5", "5x", "x5", "5x5x5", "axb",
                                   "99999999999x5", "5 x5"}) {
        EXPECT_EQ(UsageError({"render", "in", "-o", "a.png", "--size", size}),
                  std::string("--size: \"") + size +
                      "\" is not WxH in whole numbers of at least 1");
    }
}

TEST(Options, LeaveEverythingOfTheLayoutsAndEventsAtItsDefault)
{
    const RenderOptions options = Render({"in", "-o", "a.png"});
    EXPECT_EQ(options.layout, "treemap");
    EXPECT_EQ(options.lastColumns, 0xFFFFFFFFU);
    EXPECT_FALSE(options.noAlign || options.inlineLabels || options.relativeToMinDepth);
    EXPECT_FALSE(options.fitSize);
    EXPECT_EQ(options.colorIndex, "product");
    EXPECT_EQ(options.events, "");
    EXPECT_EQ(options.deviceScale, 1.0F);
    EXPECT_EQ(options.model.root, "");
    EXPECT_EQ(Render({"in", "-o", "a.png", "--scale", "3"}).deviceScale, 3.0F) << "the scale";
}

TEST(Options, TakeTheOptionsOfTheIcicle)
{
    const RenderOptions options =
        Render({"in", "-o", "a.png", "--layout", "icicle", "--no-align", "--last-columns=3",
                "--inline-labels", "--relative-to-min-depth", "--size", "fit"});
    EXPECT_TRUE(options.noAlign && options.inlineLabels && options.relativeToMinDepth);
    EXPECT_TRUE(options.fitSize);
    EXPECT_EQ(options.lastColumns, 3U);
    EXPECT_EQ(Render({"in", "-o", "a.png", "--layout", "icicle", "--last-columns", "4294967295"})
                  .lastColumns,
              0xFFFFFFFFU);
}

TEST(Options, TellOfOptionsThatTheLayoutCannotUse)
{
    for (const char* const layout : {"treemap", "cushion"}) {
        for (const char* const option :
             {"--no-align", "--last-columns=2", "--inline-labels", "--relative-to-min-depth"}) {
            const std::string name = std::string(option).substr(0, std::string(option).find("=2"));
            EXPECT_EQ(Render({"in", "-o", "a.png", "--layout", layout, option}).withoutEffect,
                      std::vector<std::string>{name + " has no effect without --layout icicle"});
            EXPECT_TRUE(
                Render({"in", "-o", "a.png", "--layout", "icicle", option}).withoutEffect.empty());
        }
        EXPECT_EQ(UsageError({"render", "in", "-o", "a.png", "--layout", layout, "--size=fit"}),
                  "--size fit needs --layout icicle");
    }
    EXPECT_EQ(Render({"in", "-o", "a.png", "--color-index", "kind"}).withoutEffect,
              std::vector<std::string>{"--color-index has no effect without --layout cushion"});
    EXPECT_TRUE(
        Render({"in", "-o", "a.png", "--layout", "cushion", "--no-labels"}).withoutEffect.empty())
        << "only the icicle reads it, and it may be given all the same";
}

TEST(Options, RefuseNumbersOfColumnsBelowOneOrOutOfRange)
{
    for (const char* const count : {"0", "-1", "1.5", "two", "4294967296", ""})
        EXPECT_NE(UsageError({"render", "in", "-o", "a.png", "--layout", "icicle", "--last-columns",
                              count}),
                  "accepted")
            << count;
}

TEST(Options, RefuseUnknownColoursAndDeviceScales)
{
    EXPECT_NE(UsageError({"render", "in", "-o", "a.png", "--layout", "cushion", "--color-index",
                          "rainbow"}),
              "accepted");
    for (const char* const scale : {"0", "-1", "nan", "inf", "x"})
        EXPECT_NE(UsageError({"render", "in", "-o", "a.png", "--device-scale", scale}), "accepted")
            << scale;
}

TEST(Options, GiveStandardInputToOneReaderOnly)
{
    EXPECT_EQ(UsageError({"render", "-", "-o", "a.png", "--events", "-"}),
              "--events: standard input is the tree file already");
    EXPECT_EQ(Render({"in", "-o", "a.png", "--events", "-"}).events, "-");
}

TEST(Options, RefuseToWriteOverTheEvents)
{
    EXPECT_NE(UsageError({"render", "-", "-o", KUV_SOURCE_DIR "/./LICENSE", "--events",
                          KUV_SOURCE_DIR "/LICENSE", "--format", "png"}),
              "accepted");
}

TEST(Options, RefuseScalesAndOriginsThatAreNoFiniteNumbers)
{
    for (const char* const scale : {"0", "-1", "nan", "inf", "1e99", "x", ""})
        EXPECT_NE(UsageError({"render", "in", "-o", "a.png", "--scale", scale}), "accepted")
            << scale;
    for (const char* const origin : {"1", "1,", ",1", "nan,0", "1,2,3"})
        EXPECT_NE(UsageError({"render", "in", "-o", "a.png", "--origin", origin}), "accepted")
            << origin;
}

TEST(Options, RefuseDeflectionsAndLimitsThatMakeNoSense)
{
    for (const char* const option :
         {"--linear-deflection=0", "--linear-deflection=-1", "--linear-deflection=nan",
          "--angular-deflection=0", "--angular-deflection=181", "--angular-deflection=nan",
          "--memory-limit=0", "--memory-limit=x", "--time-limit=0", "--time-limit=-4",
          "--mesh-quality=best"})
        EXPECT_NE(UsageError({"render", "in", "-o", "a.png", option}), "accepted") << option;
}

TEST(Options, RefuseWhatIsNotOffered)
{
    EXPECT_NE(UsageError({"render", "in", "-o", "a.png", "--layout", "spiral"}), "accepted");
    EXPECT_NE(UsageError({"render", "in", "-o", "a.png", "--format", "bmp"}), "accepted");
    EXPECT_NE(UsageError({"render", "in", "-o", "a.png", "--bogus"}), "accepted");
    EXPECT_NE(UsageError({"render", "in", "other", "-o", "a.png"}), "accepted");
    EXPECT_NE(UsageError({"paint", "in"}), "accepted");
}

TEST(Options, RefuseMissingWords)
{
    EXPECT_EQ(UsageError({}), "a command is needed: render or info");
    EXPECT_EQ(UsageError({"render", "in"}), "--output is required");
    EXPECT_EQ(UsageError({"render", "-o", "a.png"}), "INPUT is required");
    EXPECT_EQ(UsageError({"info"}), "INPUT is required");
}

TEST(Options, RefuseQuietAndProgressTogether)
{
    EXPECT_NE(UsageError({"info", "in", "--quiet", "--progress"}), "accepted");
}

TEST(Options, RefuseToWriteOverTheInput)
{
    EXPECT_NE(UsageError({"render", KUV_SOURCE_DIR "/LICENSE", "-o", KUV_SOURCE_DIR "/./LICENSE",
                          "--format", "png"}),
              "accepted");
}

TEST(Options, GiveInfoItsDefaultsAndOptions)
{
    const auto plain = std::get<InfoOptions>(Parse({"info", "in"}));
    EXPECT_FALSE(plain.json);
    EXPECT_EQ(plain.top, 20u);
    EXPECT_FALSE(plain.maxTriangles);
    const auto full =
        std::get<InfoOptions>(Parse({"info", "in", "--json", "--top", "3", "--max-triangles=0"}));
    EXPECT_TRUE(full.json);
    EXPECT_EQ(full.top, 3u);
    EXPECT_EQ(full.maxTriangles, 0u);
    EXPECT_NE(UsageError({"info", "in", "--top", "-1"}), "accepted");
    EXPECT_NE(UsageError({"info", "in", "--max-triangles", "many"}), "accepted");
}

TEST(Options, ShowControlCharactersInUsageErrorsAsEscapes)
{
    const std::string text = UsageError({"info", "in", "a\x1b[31m\nb\u009b"});
    EXPECT_NE(text.find("a\\x1b[31m\\x0ab\\x9b"), std::string::npos) << text;
}

TEST(Options, AnswerHelpAndVersionWithStatusZero)
{
    for (const std::vector<const char*>& words : std::vector<std::vector<const char*>>{
             {"--help"}, {"render", "--help"}, {"info", "--help"}, {"--version"}}) {
        const CommandLine command = Parse(words);
        ASSERT_TRUE(std::holds_alternative<Answer>(command));
        EXPECT_EQ(std::get<Answer>(command).status, 0);
        EXPECT_FALSE(std::get<Answer>(command).text.empty());
    }
    EXPECT_EQ(std::get<Answer>(Parse({"--version"})).text.rfind("dataviz ", 0), 0u);
}

TEST(Options, SayInHelpThatAreasAreNoMeasure)
{
    EXPECT_NE(std::get<Answer>(Parse({"render", "--help"})).text.find("areas are no measure"),
              std::string::npos);
}

}  // namespace dataviz
