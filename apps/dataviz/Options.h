#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace dataviz {

/// What every command that reads a 3D model may be told about it.
struct ModelOptions {
    bool primitives = false;  ///< leaves are faces instead of reps
    bool wholeReps = false;   ///< weigh nodes with the whole-rep rule
    std::string root;         ///< labels of the subtree to start from; empty for the whole
    std::string meshQuality = "normal";
    double linearDeflection = 0.004;    ///< a fraction of the part's largest side
    double angularDeflection = 20;      ///< degrees
    std::uint64_t memoryLimit = 16384;  ///< MB
    std::uint64_t timeLimit = 3600;     ///< seconds
};

/// Whether to say on standard error how far the work is.
enum class ProgressMode { WhenTerminal, Always, Never };

enum class PictureFileFormat { Png, Svg, Pdf, Json, Html };

struct RenderOptions {
    std::string input;
    std::string output;
    PictureFileFormat format = PictureFileFormat::Png;
    std::string layout = "treemap";
    std::uint32_t width = 1280;
    std::uint32_t height = 800;
    bool fitSize = false;  ///< icicle only: the size that shows the whole plot instead
    float originX = 0;
    float originY = 0;
    float scale = 1;
    std::string font;  ///< a family; empty for a sans-serif font; "none" for no font at all
    bool noLabels = false;
    bool resizeByValue = false;
    bool colorByValue = false;
    bool noAlign = false;                     ///< icicle only, as the next three
    std::uint32_t lastColumns = 0xFFFFFFFFU;  ///< no limit
    bool inlineLabels = false;
    bool relativeToMinDepth = false;
    std::string colorIndex = "product";  ///< cushion of a model only
    bool isColorIndexGiven = false;
    /// What to say of options that the layout cannot use, one line each.
    std::vector<std::string> withoutEffect;
    std::string events;     ///< a file to play before the picture is written; may be empty
    float deviceScale = 1;  ///< of the viewer that delivers the events
    ModelOptions model;
    ProgressMode progress = ProgressMode::WhenTerminal;
};

struct InfoOptions {
    std::string input;
    bool json = false;
    std::uint64_t top = 20;
    std::optional<std::uint64_t> maxTriangles;
    ModelOptions model;
    ProgressMode progress = ProgressMode::WhenTerminal;
};

/// The command line asks for a text, or is wrong: nothing is run.
struct Answer {
    int status = 0;  ///< 0: the text goes to standard output; 2: to standard error
    std::string text;
};

using CommandLine = std::variant<Answer, RenderOptions, InfoOptions>;

/// Reads the command line. Opens no file.
CommandLine ParseCommandLine(int count, const char* const* words);

}  // namespace dataviz
