#include "private/CushionShadingAvx2.h"

#include "private/CushionLight.h"

#if defined(__x86_64__)

#    include <immintrin.h>

#    include <algorithm>
#    include <cstddef>
#    include <cstring>

#    define VIS_AVX2 __attribute__((target("avx2")))

namespace CushionShading {

namespace {

constexpr int LANES = 8;
/// As many columns as are worked on together: what they have in common with all rows stays close.
constexpr int TILE = 512;

// Intensities are estimated by an approximate reciprocal root, in 65536ths. Where the estimate is
// not further from a whole number than it may be wrong, the division and the root are done.
//
// The error of the estimate and that of the plain loop's own roundings add up to less than 0.0003:
// 1.5 * 2^-12 of the approximation leave 2e-7 after one step of Newton's, the other roundings are
// fewer than 25 of 2^-24 each, relative to at most 215 * 1.27, the sum of the light's parts.
constexpr float FRACTION = 65536.0f;
/// A little more than 0.0009, in 65536ths, is the distance kept from whole numbers.
constexpr int DOUBT = 64;

/// What each column of a tile adds to the light and to the squared length of the normal; to the
/// light exactly, and as the estimate wants it.
struct Columns {
    alignas(32) float lean[TILE];
    alignas(32) float estimate[TILE];
    alignas(32) float square[TILE];
    int count;
};

/// The same for one row, in all lanes. Estimates include what is common to all pixels.
struct Row {
    __m256 lean;
    __m256 square;
    __m256 estimate;
    __m256 estimatedSquare;
};

// Half the diffuse light in 65536ths: the step of Newton's below gives twice the reciprocal root.
constexpr float HALF_LIGHT = 0.5f * DIFFUSE * FRACTION;

VIS_AVX2 void ComputeColumns(Columns& columns, const CushionGeometry::Parabola& parabola, int first,
                             int count)
{
    const __m256 twice = _mm256_set1_ps(2.0f * parabola.quadratic);
    const __m256 linear = _mm256_set1_ps(parabola.linear);
    const __m256i steps = _mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7);
    columns.count = count;
    for (int x = 0; x < count; x += LANES) {
        const __m256i pixel = _mm256_add_epi32(_mm256_set1_epi32(first + x), steps);
        const __m256 middle = _mm256_add_ps(_mm256_cvtepi32_ps(pixel), _mm256_set1_ps(0.5f));
        const __m256 slope = _mm256_add_ps(_mm256_mul_ps(twice, middle), linear);
        const __m256 normal = _mm256_xor_ps(slope, _mm256_set1_ps(-0.0f));
        _mm256_store_ps(columns.lean + x, _mm256_mul_ps(_mm256_set1_ps(LIGHT_X), normal));
        _mm256_store_ps(columns.estimate + x,
                        _mm256_mul_ps(_mm256_set1_ps(HALF_LIGHT * LIGHT_X), normal));
        _mm256_store_ps(columns.square + x, _mm256_mul_ps(normal, normal));
    }
}

VIS_AVX2 inline Row RowAt(const CushionGeometry::Parabola& parabola, int y)
{
    const float normal = NormalAt(parabola, y);
    const float square = normal * normal;
    return {_mm256_set1_ps(LIGHT_Y * normal), _mm256_set1_ps(square),
            _mm256_set1_ps(HALF_LIGHT * LIGHT_Y * normal + HALF_LIGHT * LIGHT_Z),
            _mm256_set1_ps(square + 1.0f)};
}

/// Intensities in 65536ths by the exact division and root.
VIS_AVX2 __attribute__((noinline)) __m256i DivideExactly(__m256 lean, __m256 square, const Row& row)
{
    const __m256 sum = _mm256_add_ps(_mm256_add_ps(lean, row.lean), _mm256_set1_ps(LIGHT_Z));
    const __m256 light = _mm256_mul_ps(sum, _mm256_set1_ps(DIFFUSE));
    const __m256 length = _mm256_add_ps(_mm256_add_ps(square, row.square), _mm256_set1_ps(1.0f));
    const __m256 cosine = _mm256_div_ps(light, _mm256_sqrt_ps(length));
    // The second operand, 0, is what comes out for not-a-number.
    const __m256 lit = _mm256_max_ps(cosine, _mm256_setzero_ps());
    const __m256i whole = _mm256_cvttps_epi32(_mm256_add_ps(lit, _mm256_set1_ps(AMBIENT)));
    // The light is no longer than 1 and no brighter than 255 together: nothing has to be cut off.
    return _mm256_slli_epi32(whole, 16);
}

/// Intensities in 65536ths, right in their whole part, of the eight columns from `x` on.
VIS_AVX2 inline __m256i IntensitiesAt(const Columns& columns, int x, const Row& row)
{
    const __m256 square = _mm256_loadu_ps(columns.square + x);
    const __m256 halfLight = _mm256_add_ps(_mm256_loadu_ps(columns.estimate + x), row.estimate);
    const __m256 length = _mm256_add_ps(square, row.estimatedSquare);
    const __m256 guess = _mm256_rsqrt_ps(length);
    const __m256 product = _mm256_mul_ps(_mm256_mul_ps(length, guess), guess);
    const __m256 correction = _mm256_sub_ps(_mm256_set1_ps(3.0f), product);
    const __m256 cosine = _mm256_mul_ps(_mm256_mul_ps(halfLight, guess), correction);
    // Whatever lies below 40.5, not-a-number as well, has the whole part 40, and beyond doubt.
    const __m256 lit = _mm256_max_ps(_mm256_add_ps(cosine, _mm256_set1_ps(AMBIENT * FRACTION)),
                                     _mm256_set1_ps((AMBIENT + 0.5f) * FRACTION));
    const __m256i estimate = _mm256_cvttps_epi32(lit);

    const __m256i shifted = _mm256_add_epi32(estimate, _mm256_set1_epi32(DOUBT));
    const __m256i distance = _mm256_and_si256(shifted, _mm256_set1_epi32(0x10000 - 2 * DOUBT));
    const __m256i isDoubtful = _mm256_cmpeq_epi32(distance, _mm256_setzero_si256());
    if (__builtin_expect(_mm256_movemask_epi8(isDoubtful) != 0, 0))
        return DivideExactly(_mm256_loadu_ps(columns.lean + x), square, row);
    return estimate;
}

/// A colour as factors for 16-bit lanes: red and blue, and green.
struct Tints {
    __m256i redBlue;
    __m256i green;
};

/// The factor with which ((256 i + 1) * factor) >> 24 is trunc(i * (share / 255)), as computed with
/// floats, for all intensities i and all shares up to 255.
constexpr unsigned int FactorOf(unsigned int share)
{
    const unsigned int factor = (share * 65536U + 64U) / 255U;
    return factor < 65535U ? factor : 65535U;
}

VIS_AVX2 inline Tints TintsOf(unsigned int colour)
{
    const unsigned int red = FactorOf((colour >> 16U) & 255U);
    const unsigned int green = FactorOf((colour >> 8U) & 255U);
    const unsigned int blue = FactorOf(colour & 255U);
    return {_mm256_set1_epi32(static_cast<int>(red | blue << 16U)),
            _mm256_set1_epi32(static_cast<int>(green))};
}

/// Pixels of intensities in 65536ths.
VIS_AVX2 inline __m256i Colour(__m256i intensities, const Tints& tints)
{
    // 256 i + 1 in both halves of each lane.
    const __m256i places =
        _mm256_setr_epi8(-1, 2, -1, 2, -1, 6, -1, 6, -1, 10, -1, 10, -1, 14, -1, 14, -1, 2, -1, 2,
                         -1, 6, -1, 6, -1, 10, -1, 10, -1, 14, -1, 14);
    const __m256i value =
        _mm256_or_si256(_mm256_shuffle_epi8(intensities, places), _mm256_set1_epi32(0x00010001));
    const __m256i redBlue = _mm256_srli_epi16(_mm256_mulhi_epu16(value, tints.redBlue), 8);
    const __m256i green =
        _mm256_and_si256(_mm256_mulhi_epu16(value, tints.green), _mm256_set1_epi32(0x0000FF00));
    const __m256i alpha = _mm256_set1_epi32(static_cast<int>(0xFF000000U));
    return _mm256_or_si256(_mm256_or_si256(redBlue, green), alpha);
}

VIS_AVX2 inline void Store(unsigned char* to, std::ptrdiff_t pixel, __m256i pixels)
{
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(to + 4 * pixel), pixels);
}

/// Stores the first `count` pixels, fewer than eight.
VIS_AVX2 inline void StoreSome(unsigned char* to, __m256i pixels, int count)
{
    __m128i rest = _mm256_castsi256_si128(pixels);
    if ((count & 4) != 0) {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to), rest);
        rest = _mm256_extracti128_si256(pixels, 1);
        to += 16;
    }
    if ((count & 2) != 0) {
        _mm_storel_epi64(reinterpret_cast<__m128i*>(to), rest);
        rest = _mm_unpackhi_epi64(rest, rest);
        to += 8;
    }
    if ((count & 1) != 0) {
        const int last = _mm_cvtsi128_si32(rest);
        std::memcpy(to, &last, 4);
    }
}

/// One row of a tile.
VIS_AVX2 inline void ShadeRow(unsigned char* to, const Columns& columns, const Row& row,
                              const Tints& tints)
{
    if (columns.count < LANES) {
        StoreSome(to, Colour(IntensitiesAt(columns, 0, row), tints), columns.count);
        return;
    }
    const int last = columns.count - LANES;
    for (int x = 0; x < last; x += LANES)
        Store(to, x, Colour(IntensitiesAt(columns, x, row), tints));
    // These may overlap those before: the same pixels come out.
    Store(to, last, Colour(IntensitiesAt(columns, last, row), tints));
}

VIS_AVX2 void ShadeRows(const Canvas& canvas, const Patch& patch, const PixelBox& box)
{
    const Tints tints = TintsOf(patch.colour);
    // Not cleared: as much as is read is computed below.
    Columns columns;  // NOLINT(cppcoreguidelines-pro-type-member-init)
    for (int first = box.left; first <= box.right; first += columns.count) {
        ComputeColumns(columns, patch.surface.x, first, std::min(box.right - first + 1, TILE));
        for (int y = box.bottom; y <= box.top; ++y)
            ShadeRow(PixelAt(canvas, first, y), columns, RowAt(patch.surface.y, y), tints);
    }
}

// ---- surfaces that do not change along an axis

/// Makes `count` pixels equal.
VIS_AVX2 inline void FillRow(unsigned char* to, std::ptrdiff_t count, __m256i pixels)
{
    if (count < LANES) {
        StoreSome(to, pixels, static_cast<int>(count));
        return;
    }
    for (std::ptrdiff_t x = 0; x < count - LANES; x += LANES)
        Store(to, x, pixels);
    Store(to, count - LANES, pixels);
}

VIS_AVX2 void FillRows(const Canvas& canvas, const Patch& patch)
{
    const Tints tints = TintsOf(patch.colour);
    const float nx = NormalAt(patch.surface.x, patch.box.left);
    const std::ptrdiff_t count = patch.box.right - patch.box.left + 1;
    for (int y = patch.box.bottom; y <= patch.box.top; ++y) {
        const int intensity = IntensityOf(nx, NormalAt(patch.surface.y, y));
        FillRow(PixelAt(canvas, patch.box.left, y), count,
                Colour(_mm256_set1_epi32(intensity << 16), tints));
    }
}

void ShadeOneRowForAll(const Canvas& canvas, const Patch& patch)
{
    PixelBox first = patch.box;
    first.top = first.bottom;
    ShadeRows(canvas, patch, first);
    const std::size_t bytes = (static_cast<std::size_t>(first.right - first.left) + 1U) * 4U;
    const unsigned char* const from = PixelAt(canvas, first.left, first.bottom);
    for (int y = first.bottom + 1; y <= patch.box.top; ++y)
        std::memcpy(PixelAt(canvas, first.left, y), from, bytes);
}

}  // namespace

bool HasAvx2() { return __builtin_cpu_supports("avx2") != 0; }

void ShadeWithAvx2(const Canvas& canvas, const Patch& patch)
{
    if (patch.surface.x.quadratic == 0.0f)
        FillRows(canvas, patch);
    else if (patch.surface.y.quadratic == 0.0f)
        ShadeOneRowForAll(canvas, patch);
    else
        ShadeRows(canvas, patch, patch.box);
}

}  // namespace CushionShading

#else

namespace CushionShading {

bool HasAvx2() { return false; }

void ShadeWithAvx2(const Canvas& /*canvas*/, const Patch& /*patch*/) {}

}  // namespace CushionShading

#endif
