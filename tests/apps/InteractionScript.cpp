#include "InteractionScript.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <fstream>
#include <map>
#include <memory>
#include <set>
#include <stack>

#include "KUV2D.h"
#include "VisDataTree.h"
#include "VisIcicleLayout.h"
#include "VisTreeSpaceFillingLayout.h"
#include "VisTreeSpaceFillingLayoutCache.h"
#include "player/EventPlayer.h"
#include "player/EventsFile.h"
#include "player/LayoutOwner.h"

namespace player::tests {

namespace {

using Json = nlohmann::ordered_json;

/// The module's switches that may be set from outside.
constexpr std::array VARIABLES{"DisableVisIcicleLayoutNavigateAndExtend"};

constexpr const char* NOBODY = "-";

std::string TextOf(const KUVUnicodeString& text) { return {text.GetUtf8(), text.GetByteCount()}; }

/// Everything that stands between a script and the player: the tree by labels, and its layout.
class Stage {
public:
    explicit Stage(const InteractionScript& script);
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;
    ~Stage();

    /// Plays one step; gives what was not as it must be.
    std::string Play(const Json& step);

private:
    VisDataTree* Build(const Json& sketch);
    void SetUp();
    Json EventOf(const Json& step) const;
    void PointAt(const Json& at, Json& event) const;
    std::string HearsOf(const EventLog::Entry& entry) const;
    std::string StateOf(const std::string& key) const;
    std::size_t NumberOf(const std::string& label) const;
    std::string LabelOf(const VisDataTree* node) const;

    Json options_;
    std::vector<VisDataTree*> nodes_;
    std::vector<Json> sketches_;
    VisDataTree* root_ = nullptr;
    std::unique_ptr<LayoutOwner> owner_;
    std::unique_ptr<EventPlayer> player_;
    float height_ = 0;
};

// ---- the tree and its layout

VisDataTree* Stage::Build(const Json& sketch)
{
    auto* const node =
        new VisDataTree(nullptr, KUVUnicodeString(sketch.at("label").get<std::string>()),
                        KUVUnicodeString(sketch.value("icon", std::string())));
    node->SetIsMerged(sketch.value("merged", false) ? 1 : 0);
    node->SetIsLeafObject(sketch.value("leafObject", false) ? 1 : 0);
    nodes_.push_back(node);
    sketches_.push_back(sketch);
    for (const Json& child : sketch.value("children", Json::array())) {
        VisDataTree* const built = Build(child);
        node->InsertChild(built, /*resetCaches=*/1);
        built->Release();
    }
    return node;
}

Stage::Stage(const InteractionScript& script) : options_(script.options), root_(Build(script.tree))
{
    SetUp();
}

Stage::~Stage()
{
    player_.reset();
    owner_.reset();
    root_->Release();
}

LayoutKind KindOf(const std::string& name)
{
    static const std::map<std::string, LayoutKind> KINDS{{"treemap", LayoutKind::TreeMap},
                                                         {"cushion", LayoutKind::Cushion},
                                                         {"icicle", LayoutKind::Icicle}};
    return KINDS.at(name);
}

void Stage::SetUp()
{
    owner_ = std::make_unique<LayoutOwner>(KindOf(options_.at("layout")), *root_);
    for (std::size_t i = 0; i < nodes_.size(); ++i)
        nodes_[i]->GetCache()->SetSizeValue(sketches_[i].value("value", 1));
    Drawing drawing;
    drawing.size = {options_.at("size").at(0), options_.at("size").at(1)};
    drawing.scale = options_.value("scale", 1.0F);
    drawing.lastColumns = options_.value("lastColumns", NO_COLUMN_LIMIT);
    drawing.relativeToMinDepth = options_.value("relativeToMinDepth", false);
    height_ = drawing.size.y * drawing.scale;
    owner_->Draw(drawing);
    const ViewerSettings viewer{drawing.size.x * drawing.scale, height_,
                                options_.value("deviceScale", drawing.scale)};
    player_ = std::make_unique<EventPlayer>(*owner_, nodes_, viewer);
}

// ---- names instead of numbers

std::size_t Stage::NumberOf(const std::string& label) const
{
    for (std::size_t i = 0; i < nodes_.size(); ++i) {
        if (TextOf(nodes_[i]->GetLabel()) == label)
            return i;
    }
    throw std::runtime_error("the tree has no node \"" + label + "\"");
}

std::string Stage::LabelOf(const VisDataTree* node) const
{
    return node == nullptr ? NOBODY : TextOf(node->GetLabel());
}

/// The device position of a place on a node: its centre, or a fraction of its width and height.
void Stage::PointAt(const Json& at, Json& event) const
{
    const bool isCentre = at.is_string();
    const VisDataTree* const node = nodes_[NumberOf(isCentre ? at : at.at(0))];
    const float right = isCentre ? 0.5F : at.at(1).get<float>();
    const float up = isCentre ? 0.5F : at.at(2).get<float>();
    const auto& cache = static_cast<const VisTreeSpaceFillingLayoutCache&>(*node->GetCache());
    const float scale = options_.value("deviceScale", options_.value("scale", 1.0F));
    const KUVMathPoint2Df& offset = owner_->Layout().GetDeviceActionOffset();
    event["x"] = (cache.GetPos().x + right * cache.GetSize().x) * scale - offset.x;
    event["y"] = height_ - (cache.GetPos().y + up * cache.GetSize().y) * scale - offset.y;
}

/// The event as an events file has it.
Json Stage::EventOf(const Json& step) const
{
    Json event = step;
    if (step.contains("at"))
        PointAt(step["at"], event);
    if (step.contains("node") && step["node"].is_string())
        event["node"] = NumberOf(step["node"]);
    return event;
}

// ---- what happened

std::string ColumnsText(std::uint32_t columns)
{
    return columns == 0xFFFFFFFFU ? "all" : std::to_string(columns);
}

/// "select Bolt > Rotor, right click"
std::string Stage::HearsOf(const EventLog::Entry& entry) const
{
    static const std::map<Notice, const char*> WORDS{
        {Notice::SetCurrentRoot, "root"},      {Notice::SelectNode, "select"},
        {Notice::HoverNode, "hover"},          {Notice::RightClickNode, "right click"},
        {Notice::DoubleClick, "double click"}, {Notice::SetLastColumns, "columns"}};
    std::string text;
    for (const HeardNotification* heard = entry.begin; heard != entry.end; ++heard) {
        text += text.empty() ? "" : ", ";
        text += WORDS.at(heard->notice);
        if (heard->hasNodes)
            text += " " + LabelOf(heard->previous) + " > " + LabelOf(heard->node);
        if (heard->notice == Notice::SetLastColumns) {
            text += " " + ColumnsText(heard->oldColumns) + " > " + ColumnsText(heard->newColumns) +
                    (heard->key == 0x700000   ? " by page code one"
                     : heard->key == 0x400000 ? " by page code two"
                                              : " by no page code");
        }
    }
    return text;
}

std::string Stage::StateOf(const std::string& key) const
{
    const VisTreeSpaceFillingLayout& layout = owner_->Layout();
    if (key == "selection")
        return LabelOf(layout.GetCurrentSelection());
    if (key == "leafSelection")
        return LabelOf(layout.GetCurrentLeafSelection());
    if (key == "root")
        return LabelOf(layout.GetCurrentRoot());
    if (key == "highlighted")
        return LabelOf(owner_->Highlighted());
    if (key == "earlierRoots") {
        std::string text;
        for (auto stack = layout.GetLastCurrentTreeRoots(); !stack.empty(); stack.pop())
            text = LabelOf(stack.top()) + (text.empty() ? "" : ", ") + text;
        return text;
    }
    if (key == "lastColumns")
        return ColumnsText(owner_->Icicle()->GetNLastNodes());
    throw std::runtime_error("a step cannot expect \"" + key + "\"");
}

/// "2" for the number 2, the text itself for a text.
std::string PlainText(const Json& value)
{
    return value.is_string() ? value.get<std::string>() : value.dump();
}

std::string Compare(const std::string& what, const std::string& expected, const std::string& is)
{
    if (expected == is)
        return {};
    return "  " + what + ": expected \"" + expected + "\", is \"" + is + "\"\n";
}

std::string Stage::Play(const Json& step)
{
    static const std::set<std::string> EVENT_KEYS{
        "event", "button", "buttons", "modifier", "x",        "y",    "code",   "state", "at",
        "node",  "push",   "n",       "on",       "position", "size", "result", "hears"};
    std::vector<Event> events;
    const std::string text = EventOf(step).dump();
    if (const auto error = ReadEvents(text, nodes_.size(), events))
        return "  the event is wrong: " + error->Text() + "\n";
    player_->Play(events.at(0));
    const EventLog& log = owner_->Log();
    const EventLog::Entry entry = log.At(log.Size() - 1);
    std::string problems = Compare("result", PlainText(step.value("result", Json())),
                                   entry.result ? std::to_string(*entry.result) : "null");
    problems += Compare("hears", step.value("hears", std::string()), HearsOf(entry));
    for (const auto& [key, expected] : step.items()) {
        if (EVENT_KEYS.count(key) == 0)
            problems += Compare(key, PlainText(expected), StateOf(key));
    }
    return problems;
}

}  // namespace

std::vector<InteractionScript> ReadInteractionScripts(const std::filesystem::path& folder)
{
    std::vector<std::filesystem::path> paths;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.path().extension() == ".json")
            paths.push_back(entry.path());
    }
    std::sort(paths.begin(), paths.end());
    std::vector<InteractionScript> scripts;
    for (const std::filesystem::path& path : paths) {
        std::ifstream stream(path);
        const Json file = Json::parse(stream);
        for (const Json& script : file.at("scripts")) {
            InteractionScript read;
            read.file = path.filename().string();
            read.tree = script.value("tree", file.value("tree", Json()));
            read.options = file.value("options", Json::object());
            read.options.update(script.value("options", Json::object()));
            read.environment = file.value("environment", Json::object());
            read.script = script;
            scripts.push_back(std::move(read));
        }
    }
    return scripts;
}

bool HasEnvironmentOf(const InteractionScript& script)
{
    return std::all_of(VARIABLES.begin(), VARIABLES.end(), [&](const char* name) {
        const char* const value = std::getenv(name);
        const auto wanted = script.environment.find(name);
        if (wanted == script.environment.end())
            return value == nullptr;
        return value != nullptr && value == wanted->get<std::string>();
    });
}

std::string PlayInteractionScript(const InteractionScript& script)
{
    Stage stage(script);
    std::string problems;
    int number = 0;
    for (const Json& step : script.script.at("steps")) {
        ++number;
        const std::string found = stage.Play(step);
        if (!found.empty())
            problems += "step " + std::to_string(number) + ", " + step.dump() + "\n" + found;
    }
    return problems;
}

}  // namespace player::tests
