#include "player/EventsFile.h"

#include <sstream>

#include <gtest/gtest.h>

namespace player {

namespace {

std::vector<Event> Read(const std::string& text)
{
    std::vector<Event> events;
    const std::optional<EventsFileError> error = ReadEvents(text, 10, events);
    EXPECT_FALSE(error) << error->Text() << "\nin " << text.substr(0, 200);
    return events;
}

/// "line:column reason" of a text that must be refused, for a tree of ten nodes.
std::string Refusal(const std::string& text)
{
    std::vector<Event> events(1);
    const std::optional<EventsFileError> error = ReadEvents(text, 10, events);
    EXPECT_TRUE(error) << "accepted: " << text.substr(0, 200);
    EXPECT_TRUE(events.empty()) << "a refused file leaves nothing behind";
    if (!error)
        return {};
    return std::to_string(error->line) + ":" + std::to_string(error->column) + " " + error->reason;
}

template <typename Wanted>
Wanted One(const std::string& text)
{
    const std::vector<Event> events = Read(text);
    EXPECT_EQ(events.size(), 1U);
    const Wanted* const event = events.empty() ? nullptr : std::get_if<Wanted>(&events[0]);
    EXPECT_NE(event, nullptr) << text;
    return event != nullptr ? *event : Wanted();
}

}  // namespace

// ---- the events

TEST(EventsFile, ReadsMouseEventsWithTheirDefaults)
{
    const auto full = One<MouseEvent>(
        R"({"event":"press","button":3,"buttons":4,"modifier":2,"x":10.75,"y":-3})");
    EXPECT_EQ(full.action, MouseAction::Press);
    EXPECT_EQ(full.button, 3);
    EXPECT_EQ(full.buttons, 4);
    EXPECT_EQ(full.modifier, 2);
    EXPECT_EQ(full.position.x, 10.75F);
    EXPECT_EQ(full.position.y, -3.0F);
    const auto plain = One<MouseEvent>(R"({"event":"motion","x":1,"y":2})");
    EXPECT_EQ(plain.action, MouseAction::Motion);
    EXPECT_EQ(plain.button, 0);
    EXPECT_EQ(plain.buttons, 0);
    EXPECT_EQ(plain.modifier, 0);
    EXPECT_EQ(One<MouseEvent>(R"({"event":"release","x":1,"y":2})").action, MouseAction::Release);
    EXPECT_EQ(One<MouseEvent>(R"({"event":"doubleclick","x":1,"y":2})").action,
              MouseAction::DoubleClick);
}

TEST(EventsFile, ReadsKeys)
{
    const auto key = One<KeyEvent>(R"({"event":"key","code":"0x900000"})");
    EXPECT_EQ(key.code, 0x900000U);
    EXPECT_EQ(key.state, 1);
    EXPECT_EQ(One<KeyEvent>(R"({"event":"key","code":4294967295,"state":-2})").state, -2);
    One<ImeEvent>(R"({"event":"ime"})");
}

TEST(EventsFile, ReadsTheCallsOfTheOwner)
{
    EXPECT_EQ(One<SelectEvent>(R"({"event":"select","node":9})").node, NodeNumber(9));
    EXPECT_EQ(One<SelectEvent>(R"({"event":"select","node":null})").node, std::nullopt);
    EXPECT_EQ(One<HighlightEvent>(R"({"event":"highlight","node":"0x3"})").node, NodeNumber(3));
    EXPECT_EQ(One<SetRootEvent>(R"({"event":"setroot","node":0})").push, 1);
    EXPECT_EQ(One<SetRootEvent>(R"({"event":"setroot","node":0,"push":0})").push, 0);
    EXPECT_EQ(One<SetRootEvent>(R"({"event":"setroot","node":0,"push":false})").push, 0);
    One<UnzoomEvent>(R"({"event":"unzoom"})");
    EXPECT_EQ(One<LastColumnsEvent>(R"({"event":"lastcolumns","n":2})").count, 2U);
    EXPECT_EQ(One<LastColumnsEvent>(R"({"event":"lastcolumns","n":null})").count, 0xFFFFFFFFU);
    EXPECT_EQ(One<OffsetEvent>(R"({"event":"offset","x":1.5,"y":-2})").offset.x, 1.5F);
}

TEST(EventsFile, ReadsTheSwitches)
{
    EXPECT_EQ(One<SwitchEvent>(R"({"event":"enablezoom","on":true})").on, 1);
    EXPECT_EQ(One<SwitchEvent>(R"({"event":"enablepagekeys","on":0})").on, 0);
    const auto bytes = One<SwitchEvent>(R"({"event":"extendwithkeys","on":"0xff"})");
    EXPECT_EQ(bytes.on, 255);
    EXPECT_EQ(bytes.which, Switch::ExtendWithKeys);
}

TEST(EventsFile, ReadsDrawings)
{
    const auto plain = One<DrawEvent>(R"({"event":"draw"})");
    EXPECT_FALSE(plain.position || plain.size);
    const auto full = One<DrawEvent>(R"({"event":"draw","position":[1,"0x2"],"size":[0.5,-4e2]})");
    EXPECT_EQ(full.position->y, 2.0F);
    EXPECT_EQ(full.size->x, 0.5F);
    EXPECT_EQ(full.size->y, -400.0F);
}

TEST(EventsFile, TakesKeysInAnyOrderAndIgnoresTheOnesThatTheEventDoesNotKnow)
{
    const auto key = One<KeyEvent>(
        R"({"comment":["a",{"event":"x"},[1,[2]]],"node":"none","state":0,"code":7,"event":"key"})");
    EXPECT_EQ(key.code, 7U);
    EXPECT_EQ(key.state, 0);
}

TEST(EventsFile, TakesWholeNumbersInAnyNotation)
{
    for (const char* const code : {"12", "12.0", "1.2e1", "\"0xC\"", "\"0X0c\""})
        EXPECT_EQ(One<KeyEvent>(std::string(R"({"event":"key","code":)") + code + "}").code, 12U);
}

// ---- the file

TEST(EventsFile, IsAnArrayOrAnObjectALine)
{
    EXPECT_EQ(Read("[]").size(), 0U);
    EXPECT_EQ(Read(R"([{"event":"ime"},{"event":"unzoom"}])").size(), 2U);
    EXPECT_EQ(Read("{\"event\":\"ime\"}\n{\"event\":\"unzoom\"}").size(), 2U);
    EXPECT_EQ(Read("\n\n{\"event\":\n\"ime\"}\n \n{\"event\":\"unzoom\"}\n\n").size(), 2U);
}

TEST(EventsFile, MayHoldNoEvents)
{
    EXPECT_EQ(Read("").size(), 0U);
    EXPECT_EQ(Read("\xEF\xBB\xBF \r\n").size(), 0U);
}

TEST(EventsFile, MayBeginWithAByteOrderMarkAndHaveTheLineEndsOfAnyMachine)
{
    EXPECT_EQ(Read("\xEF\xBB\xBF{\"event\":\"ime\"}\r\n{\"event\":\"ime\"}\r\n").size(), 2U);
    EXPECT_EQ(Read("\xEF\xBB\xBF[{\"event\":\"ime\"}]").size(), 1U);
    EXPECT_EQ(Read("{\"event\":\"ime\"}\r{\"event\":\"ime\"}").size(), 2U);
    EXPECT_EQ(Refusal("\xEF\xBB\xBF{}").substr(0, 4), "1:1 ") << "the mark has no column";
}

TEST(EventsFile, SaysWhereTheSyntaxBreaks)
{
    EXPECT_EQ(Refusal("hello").substr(0, 4), "1:1 ");
    EXPECT_EQ(Refusal("{\"event\":\"ime\"}\n{\"event\" \"ime\"}").substr(0, 5), "2:10 ");
    EXPECT_EQ(Refusal("[{\"event\":\"ime\"},]").substr(0, 5), "1:18 ");
    EXPECT_EQ(Refusal("[{\"event\":\"ime\"}] x").substr(0, 5), "1:19 ");
    EXPECT_EQ(Refusal("[{\"event\":\"ime\"}").substr(0, 5), "1:17 ");
    EXPECT_EQ(Refusal("{\"event\":\"ime\"").substr(0, 5), "1:15 ");
    EXPECT_EQ(Refusal("{\"event\":\"ime\"},").substr(0, 5), "1:16 ");
    EXPECT_EQ(Refusal("{\"event\":\"ime\"} {\"event\":\"ime\"}"),
              "1:17 an event must begin on a line of its own");
    EXPECT_EQ(Refusal("{\"event\":\"ime\"}\n3"), "2:1 an event must be a JSON object");
}

TEST(EventsFile, RefusesTextThatIsNotUtf8)
{
    EXPECT_EQ(Refusal("{\"event\":\"im\xFF\"}").substr(0, 5), "1:13 ");
    EXPECT_EQ(Refusal("{\"event\":\"ime\",\"c\":\"\xC3(\"}").substr(0, 2), "1:");
    EXPECT_EQ(Refusal(std::string("{\"event\":\"ime\"}\n\0", 17)), "2:1 holds a zero byte");
}

TEST(EventsFile, RefusesElementsThatAreNoObjects)
{
    EXPECT_EQ(Refusal("[1]"), "1:2 an event must be an object, not a number");
    EXPECT_EQ(Refusal("[null]"), "1:2 an event must be an object, not null");
    EXPECT_EQ(Refusal("[[]]"), "1:2 an event must be an object, not an array");
    EXPECT_EQ(Refusal("[\"press\"]"), "1:2 an event must be an object, not a string");
    EXPECT_EQ(Refusal("[{\"event\":\"ime\"},[]]"), "1:18 an event must be an object, not an array");
}

TEST(EventsFile, RefusesUnknownEvents)
{
    EXPECT_EQ(Refusal(R"({"event":"click"})"), "1:10 there is no event \"click\"");
    EXPECT_EQ(Refusal(R"({"event":"Press","x":1,"y":1})"), "1:10 there is no event \"Press\"");
    EXPECT_EQ(Refusal(R"({"x":1})"), "1:1 the event has no \"event\"");
    EXPECT_EQ(Refusal(R"({"event":1})"), "1:10 \"event\" must be a string, not a number");
    EXPECT_EQ(Refusal("{\"event\":\"" + std::string(1000, 'x') + "\"}"),
              "1:10 the event is unknown");
    EXPECT_EQ(Refusal(R"({"event":"0x1"})"), "1:10 there is no event \"0x1\"");
    EXPECT_EQ(Refusal(R"({"event":"a\nb"})"), "1:10 the event is unknown") << "errors are one line";
}

TEST(EventsFile, RefusesMissingKeys)
{
    EXPECT_EQ(Refusal(R"( {"event":"press","y":1})"), "1:2 the event \"press\" needs \"x\"");
    EXPECT_EQ(Refusal(R"({"event":"motion","x":1})"), "1:1 the event \"motion\" needs \"y\"");
    EXPECT_EQ(Refusal(R"({"event":"key"})"), "1:1 the event \"key\" needs \"code\"");
    EXPECT_EQ(Refusal(R"({"event":"select"})"), "1:1 the event \"select\" needs \"node\"");
    EXPECT_EQ(Refusal(R"({"event":"highlight"})"), "1:1 the event \"highlight\" needs \"node\"");
    EXPECT_EQ(Refusal(R"({"event":"setroot"})"), "1:1 the event \"setroot\" needs \"node\"");
    EXPECT_EQ(Refusal(R"({"event":"lastcolumns"})"), "1:1 the event \"lastcolumns\" needs \"n\"");
    EXPECT_EQ(Refusal(R"({"event":"enablezoom"})"), "1:1 the event \"enablezoom\" needs \"on\"");
    EXPECT_EQ(Refusal(R"({"event":"offset","x":1})"), "1:1 the event \"offset\" needs \"y\"");
}

TEST(EventsFile, RefusesWrongTypes)
{
    EXPECT_EQ(Refusal(R"({"event":"motion","x":"1","y":1})"),
              "1:23 \"x\" must be a number, not a string");
    EXPECT_EQ(Refusal(R"({"event":"motion","x":null,"y":1})"),
              "1:23 \"x\" must be a number, not null");
    EXPECT_EQ(Refusal(R"({"event":"key","code":true})"),
              "1:23 \"code\" must be a whole number, not true");
    EXPECT_EQ(Refusal(R"({"event":"key","code":"0xG"})"),
              "1:23 \"code\" must be a whole number, not a string");
    EXPECT_EQ(Refusal(R"({"event":"select","node":"Rotor"})"),
              "1:26 \"node\" must be the number of a node or null, not a string");
    EXPECT_EQ(Refusal(R"({"event":"enablezoom","on":null})"),
              "1:28 \"on\" must be true, false or a number from 0 to 255, not null");
    EXPECT_EQ(Refusal(R"({"event":"lastcolumns","n":false})"),
              "1:28 \"n\" must be a whole number of at least 1 or null, not false");
    EXPECT_EQ(Refusal(R"({"event":"press","button":{},"x":1,"y":1})"),
              "1:27 \"button\" must be a whole number, not an object");
    EXPECT_EQ(Refusal(R"({"event":"press","button":[1],"x":1,"y":1})"),
              "1:27 \"button\" must be a whole number, not an array");
}

TEST(EventsFile, RefusesRectanglesThatAreNotTwoNumbersEach)
{
    for (const char* const size : {"[]", "[1]", "[1,2,3]", "[1,null]", "[[1,2]]", "[1,[2]]",
                                   "[{},1,2]", "[1,2,[]]", "[\"a\",1]"}) {
        EXPECT_EQ(Refusal(std::string(R"({"event":"draw","size":)") + size + "}"),
                  "1:24 \"size\" must be an array of two numbers")
            << size;
    }
    EXPECT_EQ(Refusal(R"({"event":"draw","position":7})"),
              "1:28 \"position\" must be an array of two numbers, not a number");
}

TEST(EventsFile, RefusesNumbersOutOfRange)
{
    EXPECT_EQ(Refusal(R"({"event":"key","code":-1})"),
              "1:23 the number of \"code\" is not from 0 to 4294967295");
    EXPECT_EQ(Refusal(R"({"event":"key","code":4294967296})"),
              "1:23 the number of \"code\" is not from 0 to 4294967295");
    EXPECT_EQ(Refusal(R"({"event":"key","code":"0x100000000"})"),
              "1:23 the number of \"code\" is not from 0 to 4294967295");
    EXPECT_EQ(Refusal(R"({"event":"key","code":1.5})"),
              "1:23 the number of \"code\" is not a whole number");
    EXPECT_EQ(Refusal(R"({"event":"press","button":2147483648,"x":1,"y":1})"),
              "1:27 the number of \"button\" is not from -2147483648 to 2147483647");
    EXPECT_EQ(Refusal(R"({"event":"lastcolumns","n":0})"),
              "1:28 the number of \"n\" is not from 1 to 4294967295");
    EXPECT_EQ(Refusal(R"({"event":"enablezoom","on":256})"),
              "1:28 the number of \"on\" is not from 0 to 255");
    EXPECT_EQ(Refusal(R"({"event":"motion","x":1e39,"y":1})"),
              "1:23 the number of \"x\" is out of the range of a 32-bit float");
    EXPECT_EQ(Refusal(R"({"event":"draw","size":[1,-1e39]})"),
              "1:24 the number of \"size\" is out of the range of a 32-bit float");
    EXPECT_EQ(Refusal(R"({"event":"motion","x":1e999,"y":1})"),
              "1:23 the number of \"x\" is out of range");
    EXPECT_EQ(Refusal(R"({"event":"ime","comment":1e999})"), "1:26 the number is out of range");
    EXPECT_EQ(Refusal(R"({"event":"key","code":99999999999999999999999999})"),
              "1:23 the number of \"code\" is not from 0 to 4294967295");
}

TEST(EventsFile, RefusesNodesThatDoNotExist)
{
    EXPECT_EQ(Refusal("{\"event\":\"ime\"}\n{\"event\":\"select\",\"node\":10}"),
              "2:26 there is no node 10: the tree has the nodes 0 to 9");
    EXPECT_EQ(Refusal(R"({"event":"setroot","node":-1})"),
              "1:27 the number of \"node\" is not from 0 to 9007199254740992");
}

TEST(EventsFile, LeavesTheNodesToTheCallerWhenTheirNumberIsNotKnownYet)
{
    std::vector<Event> events;
    EXPECT_FALSE(ReadEvents(R"([{"event":"select","node":3},{"event":"setroot","node":70},
        {"event":"highlight","node":null}])",
                            std::nullopt, events));
    EXPECT_EQ(LargestNode(events), 70U);
    EXPECT_EQ(LargestNode({}), std::nullopt);
}

TEST(EventsFile, RefusesKeysThatAreGivenTwice)
{
    EXPECT_EQ(Refusal(R"({"event":"motion","x":1,"x":2,"y":1})"), "1:25 \"x\" is given twice");
    EXPECT_EQ(Refusal(R"({"event":"ime","event":"ime"})"), "1:16 \"event\" is given twice");
    EXPECT_EQ(Refusal(R"({"event":"draw","size":[1,2],"size":null})"),
              "1:30 \"size\" is given twice");
}

TEST(EventsFile, ReadsValuesOfUnknownKeysNestedAsDeepAsTheyLike)
{
    constexpr std::size_t LEVELS = 1'000'000;
    const std::string nest = std::string(LEVELS, '[') + std::string(LEVELS, ']');
    EXPECT_EQ(Read("{\"event\":\"ime\",\"comment\":" + nest + "}").size(), 1U);
    EXPECT_EQ(Refusal("{\"event\":\"select\",\"node\":" + nest + "}"),
              "1:26 \"node\" must be the number of a node or null, not an array");
    EXPECT_EQ(Refusal(nest), "1:2 an event must be an object, not an array");
    EXPECT_EQ(Refusal("{\"event\":\"ime\",\"comment\":" + std::string(LEVELS, '[')).substr(0, 2),
              "1:");
}

TEST(EventsFile, ReadsAMillionEvents)
{
    constexpr std::size_t COUNT = 1'000'000;
    std::string text;
    for (std::size_t i = 0; i < COUNT; ++i)
        text += "{\"event\":\"motion\",\"x\":" + std::to_string(i % 1280) + ",\"y\":7}\n";
    const std::vector<Event> events = Read(text);
    ASSERT_EQ(events.size(), COUNT);
    EXPECT_EQ(std::get<MouseEvent>(events.back()).position.x,
              static_cast<float>((COUNT - 1) % 1280));
}

}  // namespace player
