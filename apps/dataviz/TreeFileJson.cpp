#include <array>
#include <new>

#include <nlohmann/json.hpp>

#include "TreeFileBuilder.h"
#include "TreeFileText.h"
#include "player/JsonText.h"

namespace dataviz {

namespace {

using Builder = TreeFileBuilder;
using player::TrackedPointer;

/// What a key means to a node.
enum class Key { Unknown, Label, Icon, Value, Color, Flag, Children, Id, Parent };

struct KeyRule {
    std::string_view name;
    Key key;
    Builder::Given given;
    bool TreeFileNode::*flag;
};

constexpr std::array KEY_RULES{
    KeyRule{"label", Key::Label, Builder::LABEL, nullptr},
    KeyRule{"name", Key::Label, Builder::LABEL, nullptr},
    KeyRule{"icon", Key::Icon, Builder::ICON, nullptr},
    KeyRule{"value", Key::Value, Builder::VALUE, nullptr},
    KeyRule{"size", Key::Value, Builder::VALUE, nullptr},
    KeyRule{"color", Key::Color, Builder::COLOR, nullptr},
    KeyRule{"mergeable", Key::Flag, Builder::MERGEABLE, &TreeFileNode::mergeable},
    KeyRule{"merged", Key::Flag, Builder::MERGED, &TreeFileNode::merged},
    KeyRule{"leafObject", Key::Flag, Builder::LEAF_OBJECT, &TreeFileNode::leafObject},
    KeyRule{"children", Key::Children, Builder::CHILDREN, nullptr},
    KeyRule{"id", Key::Id, Builder::ID, nullptr},
    KeyRule{"parent", Key::Parent, Builder::PARENT, nullptr},
};

std::string Quoted(std::string_view name) { return "\"" + std::string(name) + "\""; }

/// Receives what the parser reads. Keeps its own stack of open nodes, so depth costs memory only.
class JsonReader {
public:
    JsonReader(std::string_view text, TreeFile& file)
        : text_(text), builder_(file), seen_(text.data())
    {
    }

    std::optional<TreeFileError> Read();

    // The names that the parser calls.
    // NOLINTBEGIN(readability-identifier-naming)
    bool null();
    bool boolean(bool value);
    bool number_integer(std::int64_t value) { return Number(std::to_string(value)); }
    bool number_unsigned(std::uint64_t value) { return Number(std::to_string(value)); }
    bool number_float(double value, const std::string& text);
    bool string(std::string& value);
    bool binary(nlohmann::json::binary_t& value);
    bool start_object(std::size_t elements);
    bool key(std::string& name);
    bool end_object();
    bool start_array(std::size_t elements);
    bool end_array();
    bool parse_error(std::size_t position, const std::string& lastToken,
                     const nlohmann::json::exception& error);
    // NOLINTEND(readability-identifier-naming)

private:
    struct OpenNode {
        std::uint32_t node;
        bool inChildren;
    };
    struct TextSpan {
        std::uint64_t offset = 0;
        std::uint32_t length = Builder::NO_NODE;  // no text at all
    };

    std::size_t Consumed() const { return static_cast<std::size_t>(seen_ - text_.data()); }
    std::size_t TokenStart() const;
    bool Fail(std::size_t offset, std::string reason);
    bool FailHere(std::string reason) { return Fail(TokenStart(), std::move(reason)); }
    bool Done();

    bool Number(const std::string& digits);
    bool Scalar(const char* kind);
    bool WrongType(const char* kind);
    bool OpenChild();
    bool SetReference(std::string_view id);
    bool CheckRoot();
    std::optional<TreeFileError> Finish();
    std::optional<Builder::Problem> LinkRecords();
    std::string_view Reference(const TextSpan& span) const
    {
        return std::string_view(references_).substr(span.offset, span.length);
    }

    std::string_view text_;
    Builder builder_;
    const char* seen_;
    std::size_t lastEnd_ = 0;  // where the token before the present one ended
    std::vector<OpenNode> open_;
    std::uint64_t skipped_ = 0;      // open containers below an unknown key
    const KeyRule* rule_ = nullptr;  // the known key whose value comes next
    bool ignoreNext_ = false;        // the next value belongs to an unknown key
    bool isList_ = false;            // the file is an array of records
    bool hasKnownKey_ = false;
    bool sawAsset_ = false;  // the unknown key that was read last is the root's "asset"
    bool hasAsset_ = false;
    std::optional<TreeFileError> error_;
    // Of records only: the ids, as text, and each record's id and parent.
    std::string references_;
    std::vector<TextSpan> ids_;
    std::vector<TextSpan> parents_;
};

// ---- position

std::size_t JsonReader::TokenStart() const
{
    std::size_t offset = lastEnd_ == 0 ? player::ByteOrderMarkLength(text_) : lastEnd_;
    offset = text_.find_first_not_of(" \t\r\n:,", offset);
    return offset == std::string_view::npos ? text_.size() : offset;
}

bool JsonReader::Fail(std::size_t offset, std::string reason)
{
    error_ = MakeError(text_, offset, std::move(reason));
    return false;
}

bool JsonReader::Done()
{
    lastEnd_ = Consumed();
    return true;
}

// ---- values

bool JsonReader::WrongType(const char* kind)
{
    const char* wanted = "";
    switch (rule_->key) {
    case Key::Label:
    case Key::Icon:
        wanted = "a string";
        break;
    case Key::Value:
    case Key::Color:
        wanted = "a whole number from 0 to 9223372036854775807";
        break;
    case Key::Flag:
        wanted = "true or false";
        break;
    case Key::Children:
        wanted = "an array of nodes";
        break;
    default:
        wanted = "a string or a whole number";
        break;
    }
    return FailHere(Quoted(rule_->name) + " must be " + wanted + ", not " + kind);
}

/// A value that no known key takes.
bool JsonReader::Scalar(const char* kind)
{
    if (skipped_ > 0 || ignoreNext_) {
        ignoreNext_ = false;
        return Done();
    }
    if (rule_ != nullptr)
        return WrongType(kind);
    return FailHere(std::string(isList_ && open_.empty() ? "a record" : "a child") +
                    " must be an object, not " + kind);
}

bool JsonReader::null()
{
    if (rule_ != nullptr && rule_->key == Key::Parent) {
        rule_ = nullptr;
        return Done();
    }
    return Scalar("null");
}

bool JsonReader::boolean(bool value)
{
    if (rule_ == nullptr || rule_->key != Key::Flag)
        return Scalar(value ? "true" : "false");
    builder_.Node(open_.back().node).*(rule_->flag) = value;
    rule_ = nullptr;
    return Done();
}

bool JsonReader::Number(const std::string& digits)
{
    if (rule_ == nullptr)
        return Scalar("a number");
    if (rule_->key == Key::Id || rule_->key == Key::Parent)
        return SetReference(digits);
    if (rule_->key != Key::Value && rule_->key != Key::Color)
        return Scalar("a number");
    const ParsedValue parsed = ParseValue(digits);
    if (!parsed.problem.empty()) {
        return FailHere("the number of " + Quoted(rule_->name) + " " + std::string(parsed.problem));
    }
    TreeFileNode& node = builder_.Node(open_.back().node);
    (rule_->key == Key::Value ? node.value : node.color) = parsed.value;
    rule_ = nullptr;
    return Done();
}

bool JsonReader::number_float(double /*value*/, const std::string& text)
{
    // The text, not the double: a whole number of 18 digits written with an exponent stays exact.
    if (rule_ != nullptr && (rule_->key == Key::Id || rule_->key == Key::Parent))
        return Scalar("a fraction");
    return Number(text);
}

bool JsonReader::string(std::string& value)
{
    if (rule_ == nullptr)
        return Scalar("a string");
    if (rule_->key == Key::Id || rule_->key == Key::Parent)
        return SetReference(value);
    if (rule_->key != Key::Label && rule_->key != Key::Icon)
        return Scalar("a string");
    if (value.size() >= Builder::NO_NODE)
        return FailHere("the text is 4 GiB long or more");
    const std::uint32_t node = open_.back().node;
    if (rule_->key == Key::Label)
        builder_.SetLabel(node, value);
    else
        builder_.SetIcon(node, value);
    rule_ = nullptr;
    return Done();
}

bool JsonReader::binary(nlohmann::json::binary_t& /*value*/) { return Scalar("binary data"); }

bool JsonReader::SetReference(std::string_view id)
{
    TextSpan& span = (rule_->key == Key::Id ? ids_ : parents_)[open_.back().node];
    const bool isParent = rule_->key == Key::Parent;
    rule_ = nullptr;
    if (isParent && id.empty())
        return Done();  // the root of a table made from CSV
    if (id.size() >= Builder::NO_NODE)
        return FailHere("the text is 4 GiB long or more");
    span = {references_.size(), static_cast<std::uint32_t>(id.size())};
    references_ += id;
    return Done();
}

// ---- containers

bool JsonReader::OpenChild()
{
    const std::uint32_t parent = open_.empty() ? Builder::NO_NODE : open_.back().node;
    const std::uint32_t node = builder_.AddNode(parent, TokenStart());
    if (node == Builder::NO_NODE)
        return FailHere("the tree has more than 4,294,967,295 nodes");
    if (isList_) {
        ids_.emplace_back();
        parents_.emplace_back();
    }
    open_.push_back({node, false});
    return Done();
}

bool JsonReader::start_object(std::size_t /*elements*/)
{
    if (skipped_ > 0 || ignoreNext_) {
        ignoreNext_ = false;
        ++skipped_;
        return Done();
    }
    if (rule_ != nullptr)
        return WrongType("an object");
    return OpenChild();
}

bool JsonReader::key(std::string& name)
{
    if (skipped_ > 0) {
        // A glTF document names its version in the "asset" of its root.
        if (sawAsset_ && skipped_ == 1 && name == "version") {
            Fail(TokenStart(), "is a glTF document, not a tree");
            error_->isGltf = true;
            return false;
        }
        return Done();
    }
    const std::uint32_t node = open_.back().node;
    for (const KeyRule& rule : KEY_RULES) {
        const bool isReference = rule.key == Key::Id || rule.key == Key::Parent;
        if (rule.name != name || (isReference && !isList_))
            continue;
        if (isList_ && rule.key == Key::Children)
            return FailHere("a record of an id/parent list cannot have \"children\"");
        if (!builder_.Give(node, rule.given)) {
            return FailHere(rule.key == Key::Label   ? "\"label\" or \"name\" is given twice"
                            : rule.key == Key::Value ? "\"value\" or \"size\" is given twice"
                                                     : Quoted(name) + " is given twice");
        }
        hasKnownKey_ = hasKnownKey_ || node == 0;
        rule_ = &rule;
        return Done();
    }
    ignoreNext_ = true;
    sawAsset_ = node == 0 && !isList_ && name == "asset";
    hasAsset_ = hasAsset_ || sawAsset_;
    return Done();
}

bool JsonReader::end_object()
{
    if (skipped_ > 0) {
        --skipped_;
        return Done();
    }
    const std::uint32_t node = open_.back().node;
    if (isList_ && ids_[node].length == Builder::NO_NODE)
        return Fail(builder_.Offset(node), "the record has no \"id\"; this JSON array is no tree");
    open_.pop_back();
    return Done();
}

bool JsonReader::start_array(std::size_t /*elements*/)
{
    if (skipped_ > 0 || ignoreNext_) {
        ignoreNext_ = false;
        ++skipped_;
        return Done();
    }
    if (rule_ != nullptr && rule_->key == Key::Children) {
        open_.back().inChildren = true;
        rule_ = nullptr;
        return Done();
    }
    if (rule_ == nullptr && open_.empty() && !isList_) {
        isList_ = true;
        return Done();
    }
    return Scalar("an array");
}

bool JsonReader::end_array()
{
    if (skipped_ > 0)
        --skipped_;
    else if (!open_.empty())
        open_.back().inChildren = false;
    return Done();
}

bool JsonReader::parse_error(std::size_t /*position*/, const std::string& lastToken,
                             const nlohmann::json::exception& error)
{
    // The parser gives up on a number that no double holds; what it is given for says more. Only
    // the value of an unknown key passes, and then the parser's words have to do.
    if (error.id == player::JSON_NUMBER_OVERFLOW && !number_float(0, lastToken))
        return false;
    std::string reason = player::SyntaxReason(error.what());
    const std::size_t offset = player::SyntaxErrorOffset(text_, reason, TokenStart(), Consumed());
    return Fail(offset, std::move(reason));
}

// ---- the whole file

std::optional<Builder::Problem> JsonReader::LinkRecords()
{
    NodeTable table;
    const auto hashOf = [this](std::uint32_t node) {
        return std::hash<std::string_view>()(Reference(ids_[node]));
    };
    for (std::uint32_t i = 0; i < builder_.Count(); ++i) {
        table.Reserve(hashOf);
        const std::uint32_t former = table.FindOrInsert(hashOf(i), i, [&](std::uint32_t other) {
            return Reference(ids_[other]) == Reference(ids_[i]);
        });
        if (former != i)
            return Builder::Problem{i, "the record has the \"id\" of an earlier one"};
    }
    for (std::uint32_t i = 0; i < builder_.Count(); ++i) {
        if (parents_[i].length == Builder::NO_NODE)
            continue;
        const std::string_view wanted = Reference(parents_[i]);
        const std::uint32_t parent =
            table.Find(std::hash<std::string_view>()(wanted),
                       [&](std::uint32_t other) { return Reference(ids_[other]) == wanted; });
        if (parent == Builder::NO_NODE)
            return Builder::Problem{i,
                                    "no record has the \"id\" that the record's \"parent\" names"};
        builder_.Node(i).parent = parent;
    }
    return builder_.SortInPreOrder();
}

bool JsonReader::CheckRoot()
{
    if (isList_ && builder_.Count() == 0)
        return Fail(text_.size(), "the array holds no records");
    // "{}" is a node with nothing but defaults; an object of other keys is another kind of file.
    const bool hasOnlyOtherKeys =
        !isList_ && !hasKnownKey_ && text_.find('"') != std::string_view::npos;
    if (!hasOnlyOtherKeys)
        return true;
    Fail(static_cast<std::size_t>(builder_.Offset(0)),
         "the JSON object is no tree: it has none of the keys \"label\", \"name\", \"value\", "
         "\"size\" "
         "and \"children\"");
    error_->isGltf = hasAsset_;
    return false;
}

std::optional<TreeFileError> JsonReader::Finish()
{
    if (!CheckRoot())
        return error_;
    std::optional<Builder::Problem> problem = isList_ ? LinkRecords() : std::nullopt;
    if (!problem)
        problem = builder_.FillInValues();
    if (problem) {
        const auto offset = static_cast<std::size_t>(builder_.Offset(problem->node));
        return MakeError(text_, offset, std::move(problem->reason));
    }
    return std::nullopt;
}

std::optional<TreeFileError> JsonReader::Read()
{
    // The parser takes a zero byte for the end of the text and would ignore what follows.
    if (const std::size_t zero = text_.find('\0'); zero != std::string_view::npos)
        return MakeError(text_, zero, "holds a zero byte");
    try {
        const TrackedPointer begin(text_.data(), &seen_);
        const TrackedPointer end(text_.data() + text_.size(), &seen_);
        if (!nlohmann::json::sax_parse(begin, end, this))
            return error_;
        return Finish();
    } catch (const std::bad_alloc&) {
        return MakeError(text_, Consumed(),
                         open_.size() > builder_.Count() / 2
                             ? "the tree is nested deeper than memory allows"
                             : "the tree needs more memory than there is");
    }
}

}  // namespace

std::optional<TreeFileError> ReadJsonTree(std::string_view text, TreeFile& tree)
{
    return JsonReader(text, tree).Read();
}

}  // namespace dataviz
