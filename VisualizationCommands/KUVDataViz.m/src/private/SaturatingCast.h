#ifndef SaturatingCast_h
#define SaturatingCast_h

#include <limits>

/// `value` without its fraction, as an integer: not-a-number gives 0, values outside the range give
/// its nearest end. The only way from a float to an integer in the module.
inline int TruncateToInt(float value)
{
    // The last float below 2^31; the next one would overflow the cast.
    constexpr float LARGEST = 2147483520.0f;
    constexpr float SMALLEST = -2147483648.0f;
    if (value != value)
        return 0;
    if (value > LARGEST)
        return std::numeric_limits<int>::max();
    if (value < SMALLEST)
        return std::numeric_limits<int>::min();
    return static_cast<int>(value);
}

/// The same for doubles.
inline int TruncateToInt(double value)
{
    if (value != value)
        return 0;
    if (value >= 2147483647.0)
        return std::numeric_limits<int>::max();
    if (value <= -2147483648.0)
        return std::numeric_limits<int>::min();
    return static_cast<int>(value);
}

#endif
