#include "JsonWriter.h"

#include <cfloat>
#include <cmath>
#include <cstdio>
#include <functional>
#include <limits>
#include <memory>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <rapidcheck/gtest.h>

namespace dataviz {

namespace {

/// What a writer writes, as text.
std::string Written(const std::function<void(JsonWriter&)>& write)
{
    char* text = nullptr;
    std::size_t size = 0;
    std::FILE* const file = open_memstream(&text, &size);
    {
        JsonWriter json(file);
        write(json);
        json.Finish();
    }
    std::fclose(file);
    std::string result(text, size);
    std::free(text);
    return result;
}

}  // namespace

TEST(JsonWriter, PutsCommasBetweenValuesAndNowhereElse)
{
    EXPECT_EQ(Written([](JsonWriter& json) {
                  json.Open('{');
                  json.Key("a");
                  json.Open('[');
                  json.Integer(-1);
                  json.Null();
                  json.Open('[');
                  json.Close(']');
                  json.Close(']');
                  json.NewLine();
                  json.Key("b");
                  json.Bool(true);
                  json.Close('}');
              }),
              "{\"a\": [-1, null, []],\n\"b\": true}\n");
}

TEST(JsonWriter, WritesNumbersThatAreNotFiniteAsNull)
{
    EXPECT_EQ(Written([](JsonWriter& json) {
                  json.Pair(std::nanf(""), -std::numeric_limits<float>::infinity());
              }),
              "[null, null]\n");
}

TEST(JsonWriter, WritesTheShortestTextOfAFloat)
{
    EXPECT_EQ(Written([](JsonWriter& json) { json.Pair(47.058823F, 0.1F); }), "[47.058823, 0.1]\n");
    EXPECT_EQ(Written([](JsonWriter& json) { json.Pair(1280.0F, -1.0F); }), "[1280, -1]\n");
}

RC_GTEST_PROP(JsonWriter, FloatsReadBackToTheSame32Bits, (std::uint32_t bits))
{
    float value = 0;
    std::memcpy(&value, &bits, sizeof value);
    RC_PRE(std::isfinite(value));
    const auto read = nlohmann::json::parse(Written([&](JsonWriter& json) { json.Float(value); }));
    RC_ASSERT(static_cast<float>(read.get<double>()) == value);
    RC_ASSERT(std::strtof(Written([&](JsonWriter& json) { json.Float(value); }).c_str(), nullptr) ==
              value);
}

RC_GTEST_PROP(JsonWriter, TextsReadBackTheSame, (std::vector<std::uint16_t> units))
{
    std::string text;
    for (const std::uint16_t unit : units) {
        // All of the basic plane but the surrogates, control characters and quotes more often.
        const unsigned point = unit % 3 == 0 ? unit % 128U : unit % 0xD800U;
        if (point < 0x80) {
            text += static_cast<char>(point);
        } else if (point < 0x800) {
            text += static_cast<char>(0xC0U | (point >> 6U));
            text += static_cast<char>(0x80U | (point & 0x3FU));
        } else {
            text += static_cast<char>(0xE0U | (point >> 12U));
            text += static_cast<char>(0x80U | ((point >> 6U) & 0x3FU));
            text += static_cast<char>(0x80U | (point & 0x3FU));
        }
    }
    const auto read = nlohmann::json::parse(Written([&](JsonWriter& json) { json.String(text); }));
    RC_ASSERT(read.get<std::string>() == text);
}

TEST(JsonWriter, ReplacesBytesThatAreNoUtf8)
{
    EXPECT_EQ(Written([](JsonWriter& json) { json.String("a\xFFz"); }), "\"a\xEF\xBF\xBDz\"\n");
}

TEST(JsonWriter, NestsAsDeepAsItIsAsked)
{
    constexpr int LEVELS = 1'000'000;
    const std::string text = Written([](JsonWriter& json) {
        for (int i = 0; i < LEVELS; ++i)
            json.Open('[');
        for (int i = 0; i < LEVELS; ++i)
            json.Close(']');
    });
    EXPECT_EQ(text.size(), 2u * LEVELS + 1);
}

}  // namespace dataviz
