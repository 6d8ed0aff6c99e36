#include "player/EventsFile.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <new>

#include <nlohmann/json.hpp>

#include "player/JsonText.h"

namespace player {

namespace {

enum class Key : std::size_t {
    Event,
    Button,
    Buttons,
    Modifier,
    X,
    Y,
    Code,
    State,
    Node,
    Push,
    Count,
    On,
    Position,
    Size,
    Unknown
};

constexpr std::array<std::string_view, static_cast<std::size_t>(Key::Unknown)> KEY_NAMES{
    "event", "button", "buttons", "modifier", "x",  "y",        "code",
    "state", "node",   "push",    "n",        "on", "position", "size"};

/// A value as it was read, before it is known what it is for.
struct Value {
    enum class Kind : std::uint8_t { Absent, Null, Bool, Number, Text, Pair, Array, Object };
    Kind kind = Kind::Absent;
    bool isTrue = false;
    std::size_t offset = 0;  ///< where it stands in the text
    double number = 0;
    std::array<double, 2> pair{};
};

const char* KindName(const Value& value)
{
    switch (value.kind) {
    case Value::Kind::Null:
        return "null";
    case Value::Kind::Bool:
        return value.isTrue ? "true" : "false";
    case Value::Kind::Number:
        return "a number";
    case Value::Kind::Text:
        return "a string";
    case Value::Kind::Object:
        return "an object";
    default:
        return "an array";
    }
}

/// "0x1F"; false when the text is no such number, or one beyond 64 bits.
bool ReadHexadecimal(std::string_view text, double& number)
{
    if (text.size() < 3 || text[0] != '0' || (text[1] != 'x' && text[1] != 'X'))
        return false;
    std::uint64_t whole = 0;
    const auto [end, error] =
        std::from_chars(text.data() + 2, text.data() + text.size(), whole, /*base=*/16);
    number = static_cast<double>(whole);
    return error == std::errc() && end == text.data() + text.size();
}

/// Receives what the parser reads, an event at a time.
class EventsReader {
public:
    EventsReader(std::string_view text, std::optional<std::size_t> nodeCount,
                 std::vector<Event>& events)
        : text_(text), nodeCount_(nodeCount), events_(events), seen_(text.data())
    {
    }

    std::optional<EventsFileError> Read();

    // The names that the parser calls.
    // NOLINTBEGIN(readability-identifier-naming)
    bool null() { return Scalar(Of(Value::Kind::Null)); }
    bool boolean(bool value) { return Scalar(Of(Value::Kind::Bool, value)); }
    bool number_integer(std::int64_t value) { return Number(static_cast<double>(value)); }
    bool number_unsigned(std::uint64_t value) { return Number(static_cast<double>(value)); }
    bool number_float(double value, const std::string& /*text*/) { return Number(value); }
    bool string(std::string& value);
    bool binary(nlohmann::json::binary_t& /*value*/) { return Scalar(Of(Value::Kind::Text)); }
    bool start_object(std::size_t elements);
    bool key(std::string& name);
    bool end_object();
    bool start_array(std::size_t elements);
    bool end_array();
    bool parse_error(std::size_t position, const std::string& lastToken,
                     const nlohmann::json::exception& error);
    // NOLINTEND(readability-identifier-naming)

private:
    std::size_t Consumed() const { return static_cast<std::size_t>(seen_ - text_.data()); }
    std::size_t TokenStart() const { return SkipSpace(lastEnd_, " \t\r\n:,"); }
    std::size_t SkipSpace(std::size_t offset, const char* space) const;
    bool Done();
    bool Fail(std::size_t offset, std::string reason);
    static Value Of(Value::Kind kind, bool isTrue = false, double number = 0)
    {
        Value value;
        value.kind = kind;
        value.isTrue = isTrue;
        value.number = number;
        return value;
    }
    bool Number(double number) { return Scalar(Of(Value::Kind::Number, false, number)); }
    bool Scalar(Value value);
    bool ReadLines();

    // What an event's keys say. Each gives false after an error.
    bool MakeEvent();
    bool MakeMouseEvent(MouseAction action);
    bool MakeKeyEvent();
    bool MakeDrawEvent();
    template <typename WithNode>
    bool MakeNodeEvent(WithNode event);
    bool MakeLastColumnsEvent();
    bool MakeSwitchEvent(Switch which);
    bool MakeOffsetEvent();
    bool MakeSetRootEvent();
    bool MakePlainEvent(const Event& event)
    {
        events_.push_back(event);
        return true;
    }

    const Value& At(Key key) const { return values_[static_cast<std::size_t>(key)]; }
    bool Has(Key key) const { return At(key).kind != Value::Kind::Absent; }
    bool WrongType(Key key, const char* wanted);
    bool Require(Key key);
    bool Whole(Key key, double least, double most, double& number);
    template <typename Integer>
    bool Integral(Key key, Integer& number);
    bool Real(Key key, float& number);
    bool Flag(Key key, unsigned char& flag);
    bool Node(NodeNumber& node);
    bool Two(Key key, std::optional<Pair>& pair);
    bool ToFloat(Key key, double number, float& result);

    std::string_view text_;
    std::optional<std::size_t> nodeCount_;
    std::vector<Event>& events_;
    const char* seen_;
    std::size_t lastEnd_ = 0;  // where the token before the present one ended
    bool isArray_ = false;     // the file is an array of events
    bool inEvent_ = false;
    std::size_t eventStart_ = 0;
    Key key_ = Key::Unknown;     // of the value that comes next
    std::uint64_t nested_ = 0;   // open containers inside the event
    std::size_t pairCount_ = 0;  // elements of the array that may become a pair
    std::array<Value, static_cast<std::size_t>(Key::Unknown)> values_{};
    std::string name_;  // what "event" says
    std::optional<EventsFileError> error_;
};

// ---- position

std::size_t EventsReader::SkipSpace(std::size_t offset, const char* space) const
{
    if (offset == 0)
        offset = ByteOrderMarkLength(text_);
    offset = text_.find_first_not_of(space, offset);
    return offset == std::string_view::npos ? text_.size() : offset;
}

bool EventsReader::Done()
{
    lastEnd_ = Consumed();
    return true;
}

bool EventsReader::Fail(std::size_t offset, std::string reason)
{
    const TextPosition position = PositionAt(text_, offset);
    error_ = EventsFileError{position.line, position.column, std::move(reason)};
    return false;
}

// ---- what the parser reads

bool EventsReader::Scalar(Value value)
{
    value.offset = TokenStart();
    if (!inEvent_)
        return Fail(value.offset,
                    std::string("an event must be an object, not ") + KindName(value));
    if (nested_ == 0) {
        if (key_ != Key::Unknown)
            values_[static_cast<std::size_t>(key_)] = value;
    } else if (nested_ == 1 && key_ != Key::Unknown) {
        Value& array = values_[static_cast<std::size_t>(key_)];
        if (value.kind == Value::Kind::Number && pairCount_ < array.pair.size())
            array.pair[pairCount_] = value.number;
        else
            array.kind = Value::Kind::Array;
        ++pairCount_;
    }
    return Done();
}

bool EventsReader::string(std::string& value)
{
    double number = 0;
    if (key_ == Key::Event && nested_ == 0)
        name_ = value;
    else if (ReadHexadecimal(value, number))
        return Number(number);
    return Scalar(Of(Value::Kind::Text));
}

bool EventsReader::start_object(std::size_t /*elements*/)
{
    if (!inEvent_) {
        inEvent_ = true;
        eventStart_ = TokenStart();
        values_.fill({});
        return Done();
    }
    if (key_ != Key::Unknown && nested_ <= 1) {
        Value& value = values_[static_cast<std::size_t>(key_)];
        if (nested_ == 0)
            value.offset = TokenStart();
        value.kind = nested_ == 0 ? Value::Kind::Object : Value::Kind::Array;
    }
    ++nested_;
    return Done();
}

bool EventsReader::key(std::string& name)
{
    if (nested_ > 0)
        return Done();
    const auto* const found = std::find(KEY_NAMES.begin(), KEY_NAMES.end(), name);
    key_ = static_cast<Key>(found - KEY_NAMES.begin());
    if (key_ != Key::Unknown && Has(key_))
        return Fail(TokenStart(), "\"" + name + "\" is given twice");
    return Done();
}

bool EventsReader::end_object()
{
    if (nested_ > 0) {
        --nested_;
        return Done();
    }
    inEvent_ = false;
    return MakeEvent() && Done();
}

bool EventsReader::start_array(std::size_t /*elements*/)
{
    if (!inEvent_) {
        if (isArray_ && lastEnd_ == 0)
            return Done();
        return Fail(TokenStart(), "an event must be an object, not an array");
    }
    if (key_ != Key::Unknown && nested_ <= 1) {
        Value& value = values_[static_cast<std::size_t>(key_)];
        if (nested_ == 0)
            value.offset = TokenStart();
        // An array inside is no number, so the outer one is no pair.
        value.kind = nested_ == 0 ? Value::Kind::Pair : Value::Kind::Array;
        pairCount_ = nested_ == 0 ? 0 : pairCount_;
    }
    ++nested_;
    return Done();
}

bool EventsReader::end_array()
{
    if (!inEvent_)
        return Done();
    --nested_;
    if (nested_ == 0 && key_ != Key::Unknown) {
        Value& value = values_[static_cast<std::size_t>(key_)];
        if (pairCount_ != value.pair.size())
            value.kind = Value::Kind::Array;
    }
    return Done();
}

bool EventsReader::parse_error(std::size_t /*position*/, const std::string& /*lastToken*/,
                               const nlohmann::json::exception& error)
{
    if (error.id == JSON_NUMBER_OVERFLOW) {
        const std::string of =
            key_ == Key::Unknown || !inEvent_
                ? ""
                : " of \"" + std::string(KEY_NAMES[static_cast<std::size_t>(key_)]) + "\"";
        return Fail(TokenStart(), "the number" + of + " is out of range");
    }
    std::string reason = SyntaxReason(error.what());
    const std::size_t offset = SyntaxErrorOffset(text_, reason, TokenStart(), Consumed());
    return Fail(offset, std::move(reason));
}

// ---- the values of an event

bool EventsReader::WrongType(Key key, const char* wanted)
{
    return Fail(At(key).offset, "\"" + std::string(KEY_NAMES[static_cast<std::size_t>(key)]) +
                                    "\" must be " + wanted + ", not " + KindName(At(key)));
}

bool EventsReader::Require(Key key)
{
    if (Has(key))
        return true;
    return Fail(eventStart_, "the event \"" + name_ + "\" needs \"" +
                                 std::string(KEY_NAMES[static_cast<std::size_t>(key)]) + "\"");
}

bool EventsReader::Whole(Key key, double least, double most, double& number)
{
    const Value& value = At(key);
    if (value.kind != Value::Kind::Number)
        return WrongType(key, "a whole number");
    const std::string subject =
        "the number of \"" + std::string(KEY_NAMES[static_cast<std::size_t>(key)]) + "\" ";
    if (std::trunc(value.number) != value.number)
        return Fail(value.offset, subject + "is not a whole number");
    if (!(value.number >= least && value.number <= most)) {
        return Fail(value.offset, subject + "is not from " +
                                      std::to_string(static_cast<std::int64_t>(least)) + " to " +
                                      std::to_string(static_cast<std::int64_t>(most)));
    }
    number = value.number;
    return true;
}

/// Leaves the default where the key is absent.
template <typename Integer>
bool EventsReader::Integral(Key key, Integer& number)
{
    double whole = 0;
    if (!Has(key))
        return true;
    if (!Whole(key, static_cast<double>(std::numeric_limits<Integer>::min()),
               static_cast<double>(std::numeric_limits<Integer>::max()), whole))
        return false;
    number = static_cast<Integer>(whole);
    return true;
}

bool EventsReader::ToFloat(Key key, double number, float& result)
{
    if (std::abs(number) > static_cast<double>(std::numeric_limits<float>::max())) {
        return Fail(At(key).offset, "the number of \"" +
                                        std::string(KEY_NAMES[static_cast<std::size_t>(key)]) +
                                        "\" is out of the range of a 32-bit float");
    }
    result = static_cast<float>(number);
    return true;
}

bool EventsReader::Real(Key key, float& number)
{
    if (!Require(key))
        return false;
    if (At(key).kind != Value::Kind::Number)
        return WrongType(key, "a number");
    return ToFloat(key, At(key).number, number);
}

bool EventsReader::Flag(Key key, unsigned char& flag)
{
    if (At(key).kind == Value::Kind::Bool) {
        flag = At(key).isTrue ? 1 : 0;
        return true;
    }
    if (Has(key) && At(key).kind != Value::Kind::Number)
        return WrongType(key, "true, false or a number from 0 to 255");
    return Integral(key, flag);
}

bool EventsReader::Node(NodeNumber& node)
{
    if (!Require(Key::Node))
        return false;
    const Value& value = At(Key::Node);
    if (value.kind == Value::Kind::Null)
        return true;
    if (value.kind != Value::Kind::Number)
        return WrongType(Key::Node, "the number of a node or null");
    constexpr double LARGEST = 9007199254740992.0;  // up to here a double holds every whole number
    double number = 0;
    if (!Whole(Key::Node, 0, LARGEST, number))
        return false;
    node = static_cast<std::size_t>(number);
    if (nodeCount_ && *node >= *nodeCount_) {
        return Fail(value.offset, "there is no node " + std::to_string(*node) +
                                      ": the tree has the nodes 0 to " +
                                      std::to_string(*nodeCount_ - 1));
    }
    return true;
}

bool EventsReader::Two(Key key, std::optional<Pair>& pair)
{
    if (!Has(key))
        return true;
    const Value& value = At(key);
    if (value.kind == Value::Kind::Array)
        return Fail(value.offset, "\"" + std::string(KEY_NAMES[static_cast<std::size_t>(key)]) +
                                      "\" must be an array of two numbers");
    if (value.kind != Value::Kind::Pair)
        return WrongType(key, "an array of two numbers");
    pair.emplace();
    return ToFloat(key, value.pair[0], pair->x) && ToFloat(key, value.pair[1], pair->y);
}

// ---- the events

bool EventsReader::MakeMouseEvent(MouseAction action)
{
    MouseEvent event;
    event.action = action;
    const bool holds = Integral(Key::Button, event.button) &&
                       Integral(Key::Buttons, event.buttons) &&
                       Integral(Key::Modifier, event.modifier) && Real(Key::X, event.position.x) &&
                       Real(Key::Y, event.position.y);
    events_.emplace_back(event);
    return holds;
}

bool EventsReader::MakeKeyEvent()
{
    KeyEvent event;
    const bool holds =
        Require(Key::Code) && Integral(Key::Code, event.code) && Integral(Key::State, event.state);
    events_.emplace_back(event);
    return holds;
}

template <typename WithNode>
bool EventsReader::MakeNodeEvent(WithNode event)
{
    const bool holds = Node(event.node);
    events_.emplace_back(event);
    return holds;
}

bool EventsReader::MakeSetRootEvent()
{
    SetRootEvent event;
    const bool holds = Node(event.node) && Flag(Key::Push, event.push);
    events_.emplace_back(event);
    return holds;
}

bool EventsReader::MakeLastColumnsEvent()
{
    LastColumnsEvent event;
    if (!Require(Key::Count))
        return false;
    if (At(Key::Count).kind != Value::Kind::Null) {
        double count = 0;
        constexpr double LARGEST = 4294967295.0;
        if (At(Key::Count).kind != Value::Kind::Number)
            return WrongType(Key::Count, "a whole number of at least 1 or null");
        if (!Whole(Key::Count, 1, LARGEST, count))
            return false;
        event.count = static_cast<std::uint32_t>(count);
    }
    events_.emplace_back(event);
    return true;
}

bool EventsReader::MakeSwitchEvent(Switch which)
{
    SwitchEvent event;
    event.which = which;
    const bool holds = Require(Key::On) && Flag(Key::On, event.on);
    events_.emplace_back(event);
    return holds;
}

bool EventsReader::MakeOffsetEvent()
{
    OffsetEvent event;
    const bool holds = Real(Key::X, event.offset.x) && Real(Key::Y, event.offset.y);
    events_.emplace_back(event);
    return holds;
}

bool EventsReader::MakeDrawEvent()
{
    DrawEvent event;
    const bool holds = Two(Key::Position, event.position) && Two(Key::Size, event.size);
    events_.emplace_back(event);
    return holds;
}

bool EventsReader::MakeEvent()
{
    using Make = bool (*)(EventsReader&);
    struct Rule {
        std::string_view name;
        Make make;
    };
    using R = EventsReader;
    static constexpr std::array RULES{
        Rule{"press", [](R& r) { return r.MakeMouseEvent(MouseAction::Press); }},
        Rule{"release", [](R& r) { return r.MakeMouseEvent(MouseAction::Release); }},
        Rule{"motion", [](R& r) { return r.MakeMouseEvent(MouseAction::Motion); }},
        Rule{"doubleclick", [](R& r) { return r.MakeMouseEvent(MouseAction::DoubleClick); }},
        Rule{"key", [](R& r) { return r.MakeKeyEvent(); }},
        Rule{"ime", [](R& r) { return r.MakePlainEvent(ImeEvent{}); }},
        Rule{"select", [](R& r) { return r.MakeNodeEvent(SelectEvent{}); }},
        Rule{"highlight", [](R& r) { return r.MakeNodeEvent(HighlightEvent{}); }},
        Rule{"setroot", [](R& r) { return r.MakeSetRootEvent(); }},
        Rule{"unzoom", [](R& r) { return r.MakePlainEvent(UnzoomEvent{}); }},
        Rule{"lastcolumns", [](R& r) { return r.MakeLastColumnsEvent(); }},
        Rule{"enablezoom", [](R& r) { return r.MakeSwitchEvent(Switch::EnableZoom); }},
        Rule{"enablepagekeys", [](R& r) { return r.MakeSwitchEvent(Switch::EnablePageKeys); }},
        Rule{"extendwithkeys", [](R& r) { return r.MakeSwitchEvent(Switch::ExtendWithKeys); }},
        Rule{"offset", [](R& r) { return r.MakeOffsetEvent(); }},
        Rule{"draw", [](R& r) { return r.MakeDrawEvent(); }},
    };
    if (!Has(Key::Event))
        return Fail(eventStart_, "the event has no \"event\"");
    if (At(Key::Event).kind != Value::Kind::Text)
        return WrongType(Key::Event, "a string");
    for (const Rule& rule : RULES) {
        if (rule.name == name_)
            return rule.make(*this);
    }
    constexpr std::size_t LONGEST = 40;
    // Errors are one line.
    const bool isShown =
        name_.size() <= LONGEST && std::none_of(name_.begin(), name_.end(), [](char character) {
            return static_cast<unsigned char>(character) < ' ';
        });
    return Fail(At(Key::Event).offset,
                isShown ? "there is no event \"" + name_ + "\"" : "the event is unknown");
}

// ---- the whole file

/// One event after the other, each beginning on a line of its own.
bool EventsReader::ReadLines()
{
    constexpr const char* SPACE = " \t\r\n";
    const TrackedPointer end(text_.data() + text_.size(), &seen_);
    for (std::size_t start = SkipSpace(0, SPACE); start < text_.size();
         start = SkipSpace(lastEnd_, SPACE)) {
        const std::string_view between = text_.substr(lastEnd_, start - lastEnd_);
        if (lastEnd_ != 0 && between.find_first_of("\r\n") == std::string_view::npos)
            return Fail(start, "an event must begin on a line of its own");
        if (text_[start] != '{')
            return Fail(start, "an event must be a JSON object");
        lastEnd_ = start;
        const TrackedPointer begin(text_.data() + start, &seen_);
        if (!nlohmann::json::sax_parse(begin, end, this, nlohmann::json::input_format_t::json,
                                       /*strict=*/false))
            return false;
    }
    return true;
}

std::optional<EventsFileError> EventsReader::Read()
{
    // The parser takes a zero byte for the end of the text and would ignore what follows.
    if (const std::size_t zero = text_.find('\0'); zero != std::string_view::npos) {
        Fail(zero, "holds a zero byte");
        return error_;
    }
    const std::size_t start = SkipSpace(0, " \t\r\n");
    isArray_ = start < text_.size() && text_[start] == '[';
    if (!isArray_) {
        ReadLines();
        return error_;
    }
    const TrackedPointer begin(text_.data(), &seen_);
    const TrackedPointer end(text_.data() + text_.size(), &seen_);
    nlohmann::json::sax_parse(begin, end, this);
    return error_;
}

}  // namespace

std::string EventsFileError::Text() const
{
    return "line " + std::to_string(line) + ", column " + std::to_string(column) + ": " + reason;
}

std::optional<EventsFileError>
ReadEvents(std::string_view text, std::optional<std::size_t> nodeCount, std::vector<Event>& events)
{
    events.clear();
    std::optional<EventsFileError> error;
    try {
        error = EventsReader(text, nodeCount, events).Read();
    } catch (const std::bad_alloc&) {
        error = EventsFileError{1, 1, "the events need more memory than there is"};
    }
    if (error)
        events.clear();
    return error;
}

std::optional<std::size_t> LargestNode(const std::vector<Event>& events)
{
    std::optional<std::size_t> largest;
    const auto take = [&](const NodeNumber& node) {
        if (node && (!largest || *node > *largest))
            largest = node;
    };
    for (const Event& event : events) {
        if (const auto* const select = std::get_if<SelectEvent>(&event))
            take(select->node);
        else if (const auto* const highlight = std::get_if<HighlightEvent>(&event))
            take(highlight->node);
        else if (const auto* const root = std::get_if<SetRootEvent>(&event))
            take(root->node);
    }
    return largest;
}

}  // namespace player
