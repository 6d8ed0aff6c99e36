#include "core/MeasuringFont.h"

#include "core/Utf8.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>
#include <string>
#include <unordered_map>
#include <utility>

namespace {

/// Characters below this have a place of their own in the tables.
constexpr std::size_t DIRECT_CHARACTERS = 128;

/// So many pairs outside the table are remembered; a text of rare pairs starts over then.
constexpr std::size_t MOST_OTHER_PAIRS = 65536;

/// So many sizes keep their tables (some 70 kB each): hosts that zoom smoothly go through hundreds.
constexpr int MOST_TABLES = 8;

constexpr float UNKNOWN = std::numeric_limits<float>::quiet_NaN();

float FiniteOrZero(float value) { return std::isfinite(value) ? value : 0.0f; }

int RoundUpToInt(double value)
{
    if (!(value > 0.0))
        return 0;
    constexpr int LARGEST = std::numeric_limits<int>::max();
    return value >= static_cast<double>(LARGEST) ? LARGEST : static_cast<int>(std::ceil(value));
}

/// Number of equal bytes at the beginning.
std::size_t CommonPrefix(const char* a, const char* b, std::size_t size)
{
    std::size_t at = 0;
    for (; at + sizeof(std::uint64_t) <= size; at += sizeof(std::uint64_t)) {
        if (std::memcmp(a + at, b + at, sizeof(std::uint64_t)) != 0)
            break;
    }
    while (at < size && a[at] == b[at])
        ++at;
    return at;
}

/// Advances and kerning of one size, as far as they have been asked for.
class GlyphTables {
public:
    GlyphTables(core::FontBackend& backend, float size)
        : backend_(backend), size_(size), advances_(DIRECT_CHARACTERS, UNKNOWN),
          kerning_(DIRECT_CHARACTERS * DIRECT_CHARACTERS, UNKNOWN)
    {
    }

    float Advance(char32_t character)
    {
        if (character >= DIRECT_CHARACTERS) {
            const auto [entry, isNew] = otherAdvances_.try_emplace(character, 0.0f);
            if (isNew)
                entry->second = FiniteOrZero(backend_.Advance(character, size_));
            return entry->second;
        }
        float& advance = advances_[character];
        if (std::isnan(advance))
            advance = FiniteOrZero(backend_.Advance(character, size_));
        return advance;
    }

    float Kerning(char32_t left, char32_t right)
    {
        if (left >= DIRECT_CHARACTERS || right >= DIRECT_CHARACTERS)
            return OtherKerning(left, right);
        float& kerning = kerning_[left * DIRECT_CHARACTERS + right];
        if (std::isnan(kerning))
            kerning = FiniteOrZero(backend_.Kerning(left, right, size_));
        return kerning;
    }

private:
    float OtherKerning(char32_t left, char32_t right)
    {
        if (otherKerning_.size() >= MOST_OTHER_PAIRS)
            otherKerning_.clear();
        const std::uint64_t pair = static_cast<std::uint64_t>(left) << 32U | right;
        const auto [entry, isNew] = otherKerning_.try_emplace(pair, 0.0f);
        if (isNew)
            entry->second = FiniteOrZero(backend_.Kerning(left, right, size_));
        return entry->second;
    }

    core::FontBackend& backend_;
    float size_;
    std::vector<float> advances_;
    std::vector<float> kerning_;
    std::unordered_map<char32_t, float> otherAdvances_;
    std::unordered_map<std::uint64_t, float> otherKerning_;
};

/// The same sum without remembering anything: for when memory has run out.
double MeasurePlainly(core::FontBackend& backend, const KUVUnicodeString& text, float size)
{
    double width = 0.0;
    char32_t left = 0;
    for (std::size_t at = 0; at < text.GetByteCount();) {
        const core::Utf8Character next =
            core::DecodeUtf8(text.GetUtf8() + at, text.GetByteCount() - at);
        if (at > 0)
            width += static_cast<double>(FiniteOrZero(backend.Kerning(left, next.codePoint, size)));
        width += static_cast<double>(FiniteOrZero(backend.Advance(next.codePoint, size)));
        left = next.codePoint;
        at += next.byteCount;
    }
    return width;
}

}  // namespace

/// One size of the font: its tables and the text that was measured last.
class core::MeasuringFont::Size {
public:
    Size(FontBackend* backend, float size) : size_(size)
    {
        if (!backend)
            return;
        height_ = RoundUpToInt(static_cast<double>(size));
        descent_ = RoundUpToInt(static_cast<double>(backend->Descent(size)));
    }

    float GetSize() const { return size_; }
    int GetHeight() const { return height_; }
    int GetDescent() const { return descent_; }
    bool HasTables() const { return tables_ != nullptr; }
    unsigned long long GetLastUse() const { return lastUse_; }
    void SetLastUse(unsigned long long now) { lastUse_ = now; }

    double Measure(FontBackend& backend, const KUVUnicodeString& text)
    {
        if (!tables_)
            tables_ = std::make_unique<GlyphTables>(backend, size_);
        const char* const bytes = text.GetUtf8();
        const std::size_t byteCount = text.GetByteCount();
        ForgetBehind(CommonPrefix(bytes, lastText_.data(), std::min(byteCount, lastText_.size())));
        std::size_t at = characters_.empty() ? 0 : characters_.back().end;
        lastText_.resize(at);
        lastText_.append(bytes + at, byteCount - at);
        while (at < byteCount) {
            const Utf8Character next = DecodeUtf8(bytes + at, byteCount - at);
            at += next.byteCount;
            characters_.push_back({WidthWith(next.codePoint), at, next.codePoint});
        }
        return characters_.empty() ? 0.0 : characters_.back().width;
    }

    void ForgetText()
    {
        lastText_.clear();
        characters_.clear();
    }

    void DropTables()
    {
        tables_.reset();
        lastText_ = {};
        characters_ = {};
    }

private:
    /// A character of the last text: the width of the text up to it, and where it ends.
    struct Character {
        double width;
        std::size_t end;
        char32_t codePoint;
    };

    /// Forgets the characters that do not lie within the first `byteCount` bytes. What those bytes
    /// are does not depend on what follows them, except at their end: there a broken character may
    /// have become a whole one.
    void ForgetBehind(std::size_t byteCount)
    {
        while (!characters_.empty() && (characters_.back().end > byteCount ||
                                        characters_.back().codePoint == REPLACEMENT_CHARACTER))
            characters_.pop_back();
    }

    double WidthWith(char32_t codePoint)
    {
        const auto advance = static_cast<double>(tables_->Advance(codePoint));
        if (characters_.empty())
            return advance;
        const Character& left = characters_.back();
        return left.width + static_cast<double>(tables_->Kerning(left.codePoint, codePoint)) +
               advance;
    }

    float size_;
    int height_ = 0;
    int descent_ = 0;
    std::unique_ptr<GlyphTables> tables_;
    std::string lastText_;
    std::vector<Character> characters_;
    unsigned long long lastUse_ = 0;
};

namespace core {
KUV_IMPLEMENT_CLASS(MeasuringFont, KUVCharacterFont, "KUVHost")
}  // namespace core

core::MeasuringFont::MeasuringFont(std::shared_ptr<FontBackend> backend)
    : backend_(std::move(backend))
{
}

core::MeasuringFont::~MeasuringFont() = default;

int core::MeasuringFont::GetFontIndex(float size)
{
    if (!std::isfinite(size) || size <= 0.0f)
        return -1;
    const auto known = indices_.find(size);
    if (known != indices_.end())
        return known->second;
    try {
        const int index = static_cast<int>(sizes_.size());
        sizes_.push_back(std::make_unique<Size>(backend_.get(), size));
        try {
            indices_.emplace(size, index);
        } catch (const std::bad_alloc&) {
            sizes_.pop_back();
            return -1;
        }
        return index;
    } catch (const std::bad_alloc&) {
        return -1;
    }
}

void core::MeasuringFont::GetStringSize(const KUVUnicodeString& text, int* width, int* height,
                                        int* descent, int fontIndex)
{
    const bool known = fontIndex >= 0 && static_cast<std::size_t>(fontIndex) < sizes_.size();
    Size* const size = known ? sizes_[static_cast<std::size_t>(fontIndex)].get() : nullptr;
    if (width)
        *width = size ? RoundUpToInt(MeasureAt(*size, text)) : 0;
    if (height)
        *height = size ? size->GetHeight() : 0;
    if (descent)
        *descent = size ? size->GetDescent() : 0;
}

double core::MeasuringFont::MeasureWidth(const KUVUnicodeString& text, float size)
{
    const int index = GetFontIndex(size);
    return index < 0 ? 0.0 : MeasureAt(*sizes_[static_cast<std::size_t>(index)], text);
}

double core::MeasuringFont::MeasureAt(Size& size, const KUVUnicodeString& text)
{
    if (!backend_)
        return 0.0;
    if (!size.HasTables())
        LimitTables(size);
    size.SetLastUse(++clock_);
    try {
        return size.Measure(*backend_, text);
    } catch (const std::bad_alloc&) {
        size.ForgetText();
        return MeasurePlainly(*backend_, text, size.GetSize());
    }
}

void core::MeasuringFont::LimitTables(const Size& used)
{
    Size* oldest = nullptr;
    int tables = 0;
    for (const std::unique_ptr<Size>& size : sizes_) {
        if (size.get() == &used || !size->HasTables())
            continue;
        ++tables;
        if (!oldest || size->GetLastUse() < oldest->GetLastUse())
            oldest = size.get();
    }
    if (tables >= MOST_TABLES)
        oldest->DropTables();
}
