#include "Options.h"

#include <charconv>
#include <cmath>
#include <filesystem>
#include <limits>
#include <string_view>

#include <CLI/CLI.hpp>

#include "OneLine.h"

namespace dataviz {

namespace {

constexpr const char* DESCRIPTION =
    "Draws the structure of a 3D model, or any weighted tree, as a tree map (nested rectangles), a "
    "cushion tree map (shaded areas) or an icicle plot (columns).";

constexpr const char* INPUTS =
    "INPUT is a 3D model (STEP, IGES, BREP, VRML, glTF/GLB, OBJ, STL, PLY) or a tree file (JSON or "
    "CSV); \"-\" reads a tree file from standard input.";

constexpr const char* MEANING =
    "Tree map and icicle plot give a node the room that labels need, not its weight: areas are no "
    "measure. The weights (triangles of a model, values of a tree file) are in the JSON output and "
    "in dataviz info, and give the tree map's shades of grey with --color-by-value.\n\n"
    "Cushion: the areas of a model are its triangles, and its colours are what --color-index says. "
    "Leaves of a tree file are equal and white unless --resize-by-value and --color-by-value ask "
    "for "
    "its values and colours.\n\n"
    "Icicle plot: depth runs from left to right; heights count leaves. It is never shrunk: --size "
    "fit shows it whole.\n\n"
    "Events are JSON objects, one a line or in an array, for example {\"event\": \"motion\", "
    "\"x\": "
    "640, \"y\": 100}; what they gave is in the log of the JSON output. The manual lists them.";

constexpr std::int64_t LARGEST_COUNT = std::numeric_limits<std::int64_t>::max();

/// What the parser fills in before it is checked and converted.
struct RawRender {
    std::string size = "1280x800";
    std::string origin = "0,0";
    std::string scale = "1";
    std::string format;
    std::string deviceScale;
    std::optional<std::int64_t> lastColumns;
};

/// Both flags of a command about its progress.
struct RawProgress {
    bool quiet = false;
    bool progress = false;
};

// ---- values

/// Reads a whole text as a number; false when something is left over or the number is not finite.
template <typename Number>
bool ReadNumber(std::string_view text, Number& number)
{
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size())
        return false;
    if constexpr (std::is_floating_point_v<Number>)
        return std::isfinite(number);
    return true;
}

/// Reads two numbers with a separator between them.
template <typename Number>
bool ReadPair(std::string_view text, char separator, Number& first, Number& second)
{
    const std::size_t at = text.find(separator);
    return at != std::string_view::npos && ReadNumber(text.substr(0, at), first) &&
           ReadNumber(text.substr(at + 1), second);
}

std::string CheckSize(const std::string& text, RenderOptions& options)
{
    constexpr std::uint32_t LARGEST = std::numeric_limits<std::int32_t>::max();
    const bool holds = ReadPair(text, 'x', options.width, options.height) && options.width >= 1 &&
                       options.height >= 1 && options.width <= LARGEST && options.height <= LARGEST;
    return holds ? "" : "--size: \"" + text + "\" is not WxH in whole numbers of at least 1";
}

std::string CheckNumbers(const RawRender& raw, RenderOptions& options)
{
    options.fitSize = raw.size == "fit";
    std::string problem = options.fitSize ? "" : CheckSize(raw.size, options);
    if (problem.empty() && !ReadPair(raw.origin, ',', options.originX, options.originY))
        problem = "--origin: \"" + raw.origin + "\" is not X,Y";
    if (problem.empty() && !(ReadNumber(raw.scale, options.scale) && options.scale > 0))
        problem = "--scale: \"" + raw.scale + "\" is not a number above 0";
    options.deviceScale = options.scale;
    if (problem.empty() && !raw.deviceScale.empty() &&
        !(ReadNumber(raw.deviceScale, options.deviceScale) && options.deviceScale > 0))
        problem = "--device-scale: \"" + raw.deviceScale + "\" is not a number above 0";
    return problem;
}

/// An option that the layout cannot use has no effect, so that the same options can be given for
/// every layout; the program says so. Only a size that the layout cannot tell is an error.
std::string CheckLayoutOptions(const RawRender& raw, RenderOptions& options,
                               const CLI::App& command)
{
    for (const char* const option :
         {"--no-align", "--last-columns", "--inline-labels", "--relative-to-min-depth"}) {
        if (command.count(option) != 0 && options.layout != "icicle")
            options.withoutEffect.emplace_back(std::string(option) +
                                               " has no effect without --layout icicle");
    }
    if (options.fitSize && options.layout != "icicle")
        return "--size fit needs --layout icicle";
    options.isColorIndexGiven = command.count("--color-index") != 0;
    if (options.isColorIndexGiven && options.layout != "cushion")
        options.withoutEffect.emplace_back("--color-index has no effect without --layout cushion");
    if (raw.lastColumns)
        options.lastColumns = static_cast<std::uint32_t>(*raw.lastColumns);
    return {};
}

std::string CheckFormat(const std::string& format, RenderOptions& options)
{
    std::string name = format;
    if (name.empty() && options.output == "-")
        return "--format is needed to write to standard output";
    if (name.empty()) {
        name = std::filesystem::path(options.output).extension().string();
        name.erase(0, name.empty() ? 0 : 1);
        for (char& c : name)
            c = static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
    }
    if (name == "png")
        options.format = PictureFileFormat::Png;
    else if (name == "svg")
        options.format = PictureFileFormat::Svg;
    else if (name == "pdf")
        options.format = PictureFileFormat::Pdf;
    else if (name == "json")
        options.format = PictureFileFormat::Json;
    else if (name == "html")
        options.format = PictureFileFormat::Html;
    else
        return options.output +
               ": the name does not end in .png, .svg, .pdf, .json or .html; give --format";
    return {};
}

std::string CheckOutput(const RenderOptions& options)
{
    std::error_code error;
    if (options.output != "-" && options.input != "-" &&
        std::filesystem::equivalent(options.input, options.output, error))
        return options.output + ": is the input as well";
    if (options.output != "-" && !options.events.empty() && options.events != "-" &&
        std::filesystem::equivalent(options.events, options.output, error))
        return options.output + ": is the file of events as well";
    if (options.events == "-" && options.input == "-")
        return "--events: standard input is the tree file already";
    return {};
}

std::string CheckModel(const ModelOptions& model)
{
    if (!(std::isfinite(model.linearDeflection) && model.linearDeflection > 0))
        return "--linear-deflection is not a number above 0";
    if (!(model.angularDeflection > 0 && model.angularDeflection <= 180))
        return "--angular-deflection is not a number of degrees above 0 and up to 180";
    return {};
}

// ---- options of the commands

void AddModelOptions(CLI::App& command, ModelOptions& options)
{
    const std::string group = "Options for 3D models";
    command.add_flag("--primitives", options.primitives, "Leaves are faces instead of shapes")
        ->group(group);
    command
        .add_flag("--whole-reps", options.wholeReps,
                  "Weigh a node by everything that the scene holds below it")
        ->group(group);
    command
        .add_option("--mesh-quality", options.meshQuality,
                    "Factor on the two deflections: 4, 2, 1, 1/2, 1/4")
        ->check(CLI::IsMember({"very-coarse", "coarse", "normal", "fine", "very-fine"}))
        ->capture_default_str()
        ->group(group);
    command
        .add_option("--linear-deflection", options.linearDeflection,
                    "Chord deflection as a fraction of the part's largest side")
        ->type_name("F")
        ->capture_default_str()
        ->group(group);
    command
        .add_option("--angular-deflection", options.angularDeflection,
                    "Greatest angle between neighbouring facets, in degrees")
        ->type_name("D")
        ->capture_default_str()
        ->group(group);
    command
        .add_option("--root", options.root,
                    "The subtree to start from, by labels from the root on; for tree files, too")
        ->type_name("LABEL/LABEL/...")
        ->group(group);
    command.add_option("--memory-limit", options.memoryLimit, "Memory for reading and meshing")
        ->type_name("MB")
        ->check(CLI::Range(std::int64_t{1}, std::int64_t{1} << 40U).description(""))
        ->capture_default_str()
        ->group(group);
    command.add_option("--time-limit", options.timeLimit, "Time for reading and meshing")
        ->type_name("S")
        ->check(CLI::Range(std::int64_t{1}, std::int64_t{1} << 30U).description(""))
        ->capture_default_str()
        ->group(group);
}

void AddProgressOptions(CLI::App& command, RawProgress& raw)
{
    CLI::Option* const quiet = command.add_flag("--quiet", raw.quiet, "Say nothing about progress");
    command
        .add_flag("--progress", raw.progress,
                  "Say on standard error what is done, even if it is no terminal")
        ->excludes(quiet);
}

ProgressMode ModeOf(const RawProgress& raw)
{
    return raw.quiet      ? ProgressMode::Never
           : raw.progress ? ProgressMode::Always
                          : ProgressMode::WhenTerminal;
}

void AddLayoutOptions(CLI::App& command, RenderOptions& options, RawRender& raw)
{
    const std::string icicle = "Options for --layout icicle";
    command
        .add_flag(
            "--no-align", options.noAlign,
            "Leave every node one column wide instead of ending all leaves in the last column")
        ->group(icicle);
    command.add_option("--last-columns", raw.lastColumns, "Draw only the N last columns")
        ->type_name("N")
        ->check(CLI::Range(std::int64_t{1}, std::int64_t{0xFFFFFFFF}).description(""))
        ->group(icicle);
    command
        .add_flag("--inline-labels", options.inlineLabels,
                  "Icons beside their labels everywhere, not above them")
        ->group(icicle);
    command
        .add_flag("--relative-to-min-depth", options.relativeToMinDepth,
                  "With --last-columns: begin with the first node that is drawn instead of cutting "
                  "wide nodes off at the limit")
        ->group(icicle);
    command
        .add_option(
            "--color-index", options.colorIndex,
            "What colours the leaves of a model: nothing; its product, in turn; its kind of "
            "primitive; its share of the whole, each class twice the one before")
        ->check(CLI::IsMember({"none", "product", "kind", "share"}))
        ->capture_default_str()
        ->group("Options for --layout cushion");
}

CLI::App* AddRender(CLI::App& program, RenderOptions& options, RawRender& raw,
                    RawProgress& progress)
{
    CLI::App* const command =
        program.add_subcommand("render", "Draw a picture, or write its geometry");
    command->footer(std::string(INPUTS) + "\n\n" + MEANING);
    command->add_option("INPUT", options.input, "The model or tree file")->required();
    command->add_option("-o,--output", options.output, "The picture; \"-\" for standard output")
        ->type_name("OUTPUT")
        ->required();
    command->add_option("--format", raw.format, "Instead of the one that OUTPUT's name ends in")
        ->check(CLI::IsMember({"png", "svg", "pdf", "json", "html"}));
    command->add_option("--layout", options.layout, "The layout")
        ->check(CLI::IsMember({"treemap", "cushion", "icicle"}))
        ->capture_default_str();
    command
        ->add_option("--size", raw.size,
                     "Extent of the layout, in layout units; \"fit\": what an "
                     "icicle plot needs to be shown whole")
        ->type_name("WxH|fit")
        ->capture_default_str();
    command->add_option("--origin", raw.origin, "Position of the layout in the picture")
        ->type_name("X,Y")
        ->capture_default_str();
    command->add_option("--scale", raw.scale, "Pixels a layout unit")
        ->type_name("S")
        ->capture_default_str();
    command
        ->add_option("--font", options.font,
                     "Family of the labels' font, by default a sans-serif one; \"none\" lays out "
                     "without a font "
                     "(labels are then never cropped)")
        ->type_name("FAMILY");
    command->add_flag("--no-labels", options.noLabels,
                      "Clear the show-label flag of every node (only the icicle plot reads it)");
    command->add_flag(
        "--resize-by-value", options.resizeByValue,
        "Cushion: size leaves by their values (a model's are without being asked); tree "
        "map: shade nodes in grey instead");
    command->add_flag("--color-by-value", options.colorByValue,
                      "Tree map: shade nodes in grey by their value relative to the root; cushion: "
                      "colour leaves by their colour value, 0 to 7");
    AddLayoutOptions(*command, options, raw);
    command
        ->add_option("--events", options.events,
                     "Play mouse and keyboard events on the picture before it is written (JSON); "
                     "\"-\" reads standard input")
        ->type_name("FILE");
    command
        ->add_option(
            "--device-scale", raw.deviceScale,
            "Device units a layout unit of the viewer that delivers the events, by default "
            "the scale")
        ->type_name("P");
    AddProgressOptions(*command, progress);
    AddModelOptions(*command, options.model);
    return command;
}

CLI::App* AddInfo(CLI::App& program, InfoOptions& options, RawProgress& progress)
{
    CLI::App* const command =
        program.add_subcommand("info", "Count what the input holds and list the heaviest nodes");
    command->footer(INPUTS);
    command->add_option("INPUT", options.input, "The model or tree file")->required();
    command->add_flag("--json", options.json, "One JSON object with the whole tree");
    command->add_option("--top", options.top, "How many of the heaviest nodes to list")
        ->type_name("N")
        ->check(CLI::Range(std::int64_t{0}, LARGEST_COUNT).description(""))
        ->capture_default_str();
    command
        ->add_option("--max-triangles", options.maxTriangles,
                     "Exit with status 3 when the model has more, naming the heaviest nodes")
        ->type_name("N")
        ->check(CLI::Range(std::int64_t{0}, LARGEST_COUNT).description(""));
    AddProgressOptions(*command, progress);
    AddModelOptions(*command, options.model);
    return command;
}

Answer UsageError(const std::string& text) { return {2, "dataviz: " + OneLine(text) + "\n"}; }

/// Help and version are thrown by the parser, as its errors are.
Answer AnswerTo(const CLI::App& program, const CLI::ParseError& error)
{
    if (error.get_exit_code() != 0)
        return UsageError(error.what());
    if (error.get_name() == "CallForVersion")
        return {0, std::string(error.what()) + "\n"};
    const CLI::App* command = &program;
    for (const CLI::App* const parsed : program.get_subcommands())
        command = parsed;
    return {0, command == &program ? program.help() : command->help("dataviz")};
}

}  // namespace

CommandLine ParseCommandLine(int count, const char* const* words)
{
    CLI::App program(DESCRIPTION, "dataviz");
    program.set_version_flag("--version", "dataviz " KUV_VERSION);
    program.require_subcommand(0, 1);
    program.footer("\"dataviz COMMAND --help\" tells the options of a command.");
    RenderOptions render;
    InfoOptions info;
    RawRender raw;
    RawProgress progress;
    const CLI::App* const renderCommand = AddRender(program, render, raw, progress);
    AddInfo(program, info, progress);
    try {
        program.parse(count, words);
    } catch (const CLI::ParseError& error) {
        return AnswerTo(program, error);
    }
    if (program.get_subcommands().empty())
        return UsageError("a command is needed: render or info");
    if (!renderCommand->parsed()) {
        info.progress = ModeOf(progress);
        const std::string problem = CheckModel(info.model);
        return problem.empty() ? CommandLine(info) : UsageError(problem);
    }
    render.progress = ModeOf(progress);
    std::string problem = CheckNumbers(raw, render);
    if (problem.empty())
        problem = CheckLayoutOptions(raw, render, *renderCommand);
    if (problem.empty())
        problem = CheckFormat(raw.format, render);
    if (problem.empty())
        problem = CheckModel(render.model);
    if (problem.empty())
        problem = CheckOutput(render);
    return problem.empty() ? CommandLine(render) : UsageError(problem);
}

}  // namespace dataviz
