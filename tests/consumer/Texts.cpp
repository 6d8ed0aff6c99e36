// Texts of a small host: UTF-8 in a std::string, messages that are always the default.

#include "KUVMessages.h"
#include "KUVStringsMath.h"

#include <cstdio>
#include <functional>
#include <utility>

KUVUnicodeString::KUVUnicodeString() = default;
KUVUnicodeString::KUVUnicodeString(const char* utf8) : utf8_(utf8 ? utf8 : "") {}
KUVUnicodeString::KUVUnicodeString(std::string utf8) : utf8_(std::move(utf8)) {}
KUVUnicodeString::KUVUnicodeString(const KUVUnicodeString&) = default;
KUVUnicodeString::KUVUnicodeString(KUVUnicodeString&&) noexcept = default;
KUVUnicodeString& KUVUnicodeString::operator=(const KUVUnicodeString&) = default;
KUVUnicodeString& KUVUnicodeString::operator=(KUVUnicodeString&&) noexcept = default;
KUVUnicodeString::~KUVUnicodeString() = default;

bool operator==(const KUVUnicodeString& a, const KUVUnicodeString& b) { return a.utf8_ == b.utf8_; }
bool operator!=(const KUVUnicodeString& a, const KUVUnicodeString& b) { return a.utf8_ != b.utf8_; }
KUVUnicodeString operator+(const KUVUnicodeString& a, const KUVUnicodeString& b)
{
    return KUVUnicodeString(a.utf8_ + b.utf8_);
}
KUVUnicodeString& KUVUnicodeString::operator+=(const KUVUnicodeString& other)
{
    utf8_ += other.utf8_;
    return *this;
}

bool KUVUnicodeString::IsEmpty() const { return utf8_.empty(); }
const char* KUVUnicodeString::GetUtf8() const { return utf8_.c_str(); }
std::size_t KUVUnicodeString::GetByteCount() const { return utf8_.size(); }

std::size_t KUVUnicodeString::GetLength() const
{
    std::size_t length = 0;
    for (const char byte : utf8_)
        length += (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U;
    return length;
}

void KUVUnicodeString::RemoveLastCharacter()
{
    while (!utf8_.empty() && (static_cast<unsigned char>(utf8_.back()) & 0xC0U) == 0x80U)
        utf8_.pop_back();
    if (!utf8_.empty())
        utf8_.pop_back();
}

KUVUnicodeString KUVUnicodeString::FormatUnsigned64(std::uint64_t value, unsigned int minimumDigits)
{
    std::string digits = std::to_string(value);
    if (digits.size() < minimumDigits)
        digits.insert(0, minimumDigits - digits.size(), '0');
    return KUVUnicodeString(std::move(digits));
}

unsigned int KUVUnicodeString::ComputeHashKey() const
{
    unsigned int hash = 2166136261U;
    for (const char byte : utf8_)
        hash = (hash ^ static_cast<unsigned char>(byte)) * 16777619U;
    return hash;
}

KUVString::KUVString(const char* text) : text_(text ? text : "") {}
KUVString::KUVString(const KUVString&) = default;
KUVString& KUVString::operator=(const KUVString&) = default;
KUVString::~KUVString() = default;
const char* KUVString::GetText() const { return text_.c_str(); }

KUVUnicodeString KUVMsgCatalog::BuildMessage(const char*, const char*, const KUVUnicodeString*, int,
                                             const KUVUnicodeString& defaultText)
{
    return defaultText;
}
