#include "core/Utf8.h"

#include "KUVStringsMath.h"

#include <charconv>
#include <utility>

// ---- KUVUnicodeString

KUVUnicodeString::KUVUnicodeString() = default;
KUVUnicodeString::KUVUnicodeString(const char* utf8) : utf8_(utf8 ? utf8 : "") {}
KUVUnicodeString::KUVUnicodeString(std::string utf8) : utf8_(std::move(utf8)) {}
KUVUnicodeString::KUVUnicodeString(const KUVUnicodeString& other) = default;
KUVUnicodeString::KUVUnicodeString(KUVUnicodeString&& other) noexcept = default;
KUVUnicodeString& KUVUnicodeString::operator=(const KUVUnicodeString& other) = default;
KUVUnicodeString& KUVUnicodeString::operator=(KUVUnicodeString&& other) noexcept = default;
KUVUnicodeString::~KUVUnicodeString() = default;

bool operator==(const KUVUnicodeString& a, const KUVUnicodeString& b) { return a.utf8_ == b.utf8_; }

bool operator!=(const KUVUnicodeString& a, const KUVUnicodeString& b) { return !(a == b); }

KUVUnicodeString operator+(const KUVUnicodeString& a, const KUVUnicodeString& b)
{
    std::string joined;
    joined.reserve(a.utf8_.size() + b.utf8_.size());
    joined += a.utf8_;
    joined += b.utf8_;
    return KUVUnicodeString(std::move(joined));
}

KUVUnicodeString& KUVUnicodeString::operator+=(const KUVUnicodeString& other)
{
    utf8_ += other.utf8_;
    return *this;
}

bool KUVUnicodeString::IsEmpty() const { return utf8_.empty(); }

std::size_t KUVUnicodeString::GetLength() const
{
    std::size_t length = 0;
    for (std::size_t at = 0; at < utf8_.size(); ++length)
        at += core::DecodeUtf8(utf8_.data() + at, utf8_.size() - at).byteCount;
    return length;
}

void KUVUnicodeString::RemoveLastCharacter()
{
    utf8_.resize(utf8_.size() - core::LastUtf8CharacterSize(utf8_.data(), utf8_.size()));
}

const char* KUVUnicodeString::GetUtf8() const { return utf8_.c_str(); }

std::size_t KUVUnicodeString::GetByteCount() const { return utf8_.size(); }

KUVUnicodeString KUVUnicodeString::FormatUnsigned64(std::uint64_t value, unsigned int minimumDigits)
{
    char digits[20];
    const char* const end = std::to_chars(digits, digits + sizeof digits, value).ptr;
    const auto count = static_cast<std::size_t>(end - digits);
    std::string text(count < minimumDigits ? minimumDigits - count : 0, '0');
    text.append(digits, count);
    return KUVUnicodeString(std::move(text));
}

unsigned int KUVUnicodeString::ComputeHashKey() const
{
    // 32-bit FNV-1a: the same in every process, unlike the standard library's hash.
    unsigned int hash = 2166136261U;
    for (const char byte : utf8_)
        hash = (hash ^ static_cast<unsigned char>(byte)) * 16777619U;
    return hash;
}

// ---- KUVString

KUVString::KUVString(const char* text) : text_(text ? text : "") {}
KUVString::KUVString(const KUVString& other) = default;
KUVString& KUVString::operator=(const KUVString& other) = default;
KUVString::~KUVString() = default;

const char* KUVString::GetText() const { return text_.c_str(); }
