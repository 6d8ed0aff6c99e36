#ifndef KUVStringsMath_h
#define KUVStringsMath_h

// Strings, points and lists: plain values without references to anything else.

#include "KUVExport.h"

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

/// A text in Unicode, kept as UTF-8. A "character" is a code point.
///
/// Bytes that are not valid UTF-8 are kept as they came; each counts as one character.
class KUV_EXPORT KUVUnicodeString {
public:
    KUVUnicodeString();
    /// Null gives the empty text. Implicit, so that literals can be passed for texts.
    KUVUnicodeString(const char* utf8);
    explicit KUVUnicodeString(std::string utf8);
    KUVUnicodeString(const KUVUnicodeString& other);
    KUVUnicodeString(KUVUnicodeString&& other) noexcept;
    KUVUnicodeString& operator=(const KUVUnicodeString& other);
    KUVUnicodeString& operator=(KUVUnicodeString&& other) noexcept;
    ~KUVUnicodeString();

    /// Compares byte by byte; nothing is normalised.
    KUV_EXPORT friend bool operator==(const KUVUnicodeString& a, const KUVUnicodeString& b);
    KUV_EXPORT friend bool operator!=(const KUVUnicodeString& a, const KUVUnicodeString& b);
    KUV_EXPORT friend KUVUnicodeString operator+(const KUVUnicodeString& a,
                                                 const KUVUnicodeString& b);
    KUVUnicodeString& operator+=(const KUVUnicodeString& other);

    bool IsEmpty() const;
    /// Number of characters. Walks the text.
    std::size_t GetLength() const;
    /// Takes the last character away; nothing on an empty text. Does not walk the text.
    void RemoveLastCharacter();

    /// The UTF-8 bytes, zero-terminated; good until the text changes.
    const char* GetUtf8() const;
    /// Number of bytes of `GetUtf8`, without the terminating zero. Constant time.
    std::size_t GetByteCount() const;

    /// `value` in decimal, filled with zeros on the left up to `minimumDigits`.
    static KUVUnicodeString FormatUnsigned64(std::uint64_t value, unsigned int minimumDigits = 1);

    /// A hash of the text: equal texts have equal keys, in every process.
    unsigned int ComputeHashKey() const;

private:
    std::string utf8_;
};

/// A short text without an encoding, as names of widgets and commands are given.
class KUV_EXPORT KUVString {
public:
    /// Null gives the empty text.
    KUVString(const char* text = nullptr);
    KUVString(const KUVString& other);
    KUVString& operator=(const KUVString& other);
    ~KUVString();

    const char* GetText() const;

private:
    std::string text_;
};

/// A position or an extent in the plane, 2D world units.
struct KUVMathPoint2Df {
    float x = 0.0f;
    float y = 0.0f;

    constexpr KUVMathPoint2Df() = default;
    constexpr KUVMathPoint2Df(float x_, float y_) : x(x_), y(y_) {}
};

/// A point in space, scene units.
struct KUVMathPointf {
    float x = 0.0f;
    float y = 0.0f;
    float z = 0.0f;

    constexpr KUVMathPointf() = default;
    constexpr KUVMathPointf(float x_, float y_, float z_) : x(x_), y(y_), z(z_) {}
};

/// A direction in space, double precision. Not necessarily of unit length.
struct KUVMathDirection {
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;

    constexpr KUVMathDirection() = default;
    constexpr KUVMathDirection(double x_, double y_, double z_) : x(x_), y(y_), z(z_) {}
};

/// A direction in space, single precision. Not necessarily of unit length.
struct KUVMathDirectionf {
    float x = 0.0f;
    float y = 0.0f;
    float z = 0.0f;

    constexpr KUVMathDirectionf() = default;
    constexpr KUVMathDirectionf(float x_, float y_, float z_) : x(x_), y(y_), z(z_) {}
    explicit constexpr KUVMathDirectionf(const KUVMathDirection& other)
        : x(static_cast<float>(other.x)), y(static_cast<float>(other.y)),
          z(static_cast<float>(other.z))
    {
    }
};

/// A counted list of `T*`. The list holds no references: what it points to must outlive it.
///
/// An entry may be absent (null). Readers stop at the count or at the first absent entry, whichever
/// comes first.
template <class T>
class list {
public:
    int Count() const { return static_cast<int>(entries_.size()); }
    /// The entry at `index`, or null outside the range.
    T* operator[](int index) const
    {
        return index >= 0 && index < Count() ? entries_[static_cast<std::size_t>(index)] : nullptr;
    }
    /// Appends `entry`, which may be null: an absent entry.
    void Append(T* entry) { entries_.push_back(entry); }
    /// Puts `entry`, which may be null, in the place of the one at `index`; ignored outside the
    /// range.
    void Replace(int index, T* entry)
    {
        if (index >= 0 && index < Count())
            entries_[static_cast<std::size_t>(index)] = entry;
    }
    /// Drops the entries from `count` on; keeps the memory.
    void Truncate(int count)
    {
        if (count >= 0 && count < Count())
            entries_.resize(static_cast<std::size_t>(count));
    }
    void Reserve(int count)
    {
        if (count > 0)
            entries_.reserve(static_cast<std::size_t>(count));
    }
    void Empty() { entries_.clear(); }

private:
    std::vector<T*> entries_;
};

/// A counted list of numbers, with the same reading rules: an entry may be absent.
template <>
class list<int> {
public:
    list() = default;
    list(std::initializer_list<int> numbers)
    {
        for (const int number : numbers)
            Append(number);
    }

    int Count() const { return static_cast<int>(entries_.size()); }
    /// The entry at `index`, or null when it is absent or outside the range. Good until the list
    /// changes.
    const int* operator[](int index) const
    {
        if (index < 0 || index >= Count())
            return nullptr;
        const Entry& entry = entries_[static_cast<std::size_t>(index)];
        return entry.present ? &entry.number : nullptr;
    }
    void Append(int number) { entries_.push_back({number, true}); }
    void AppendAbsent() { entries_.push_back({0, false}); }
    void Empty() { entries_.clear(); }

private:
    struct Entry {
        int number;
        bool present;
    };
    std::vector<Entry> entries_;
};

#endif
