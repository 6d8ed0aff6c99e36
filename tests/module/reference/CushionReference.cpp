#include "module/reference/CushionReference.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>

namespace layoutReference {

struct Cushion::Picture {
    const Node* root = nullptr;
    Point origin;
    float scale = 1.0f;
    long long width = 0;
    long long height = 0;
    std::vector<unsigned char> pixels;
};

namespace {

constexpr unsigned int COLORS[] = {0x7FC97F, 0xBEAED4, 0xFDC086, 0xFFFF99, 0x386CB0,
                                   0xF0027F, 0xBF5B17, 0x666666, 0xFFFFFF};

long long Truncate(float value)
{
    if (std::isnan(value))
        return 0;
    return static_cast<long long>(std::clamp(value, -2147483648.0f, 2147483520.0f));
}

long long Add(long long a, long long b)
{
    const long long most = std::numeric_limits<long long>::max();
    return a > most - b ? most : a + b;
}

}  // namespace

Cushion::Cushion() : Layout(Cache::Kind::Cushion) { canZoom = false; }

void Cushion::SetLastMode(Cache& cache, unsigned int mode)
{
    if (cache.lastMode == mode)
        return;
    cache.lastMode = mode;
    cache.minimum = {-1.0f, -1.0f};
}

void Cushion::Draw(Point origin, Point size, float scale)
{
    if (!currentRoot || !currentRoot->cache)
        return;
    CushionTreemap(currentRoot->cache->lastMode, origin, size, scale);
    SetCurrentSelection(selection);
}

// ---- values

long long Cushion::ComputeSubtreeValue(const Node& node)
{
    if (!node.cache)
        return 0;
    Cache& cache = *node.cache;
    long long value = 0;
    for (const Node* const child : node.children)
        value = Add(value, ComputeSubtreeValue(*child));
    if (node.children.empty())
        value = cache.resizesWithValue ? std::max(0LL, cache.sizeValue) : 1;
    cache.subtreeValue = value;
    return value;
}

// ---- layout

void Cushion::CushionTreemap(unsigned int mode, Point origin, Point size, float scale)
{
    if (!currentRoot || !currentRoot->cache)
        return;
    Cache& cache = *currentRoot->cache;
    Picture picture;
    picture.root = currentRoot;
    picture.origin = origin;
    picture.scale = scale;
    picture.width = Truncate(scale * size.x);
    picture.height = Truncate(scale * size.y);
    if (picture.width < 1 || picture.height < 1)
        return;
    if (picture.width * picture.height > (1LL << 30) / 4)
        return;
    picture.pixels.assign(static_cast<std::size_t>(picture.width * picture.height * 4), 255);
    if (cache.isCushionComputed) {
        const float stored[4] = {cache.surface[0], cache.surface[1], cache.surface[2],
                                 cache.surface[3]};
        LayOut(picture, *currentRoot, mode, origin, size, cache.height, cache.scaleFactor, stored);
    } else {
        ComputeSubtreeValue(*currentRoot);
        const float flat[4] = {0.0f, 0.0f, 0.0f, 0.0f};
        LayOut(picture, *currentRoot, mode, origin, size, 0.5f, 0.85f, flat);
    }
    const Point place{(cache.position.x - origin.x) * scale + origin.x,
                      (cache.position.y - origin.y) * scale + origin.y};
    ViewOf(cache).InitWithTexture(
        place, {static_cast<float>(picture.width), static_cast<float>(picture.height)},
        std::move(picture.pixels));
}

void Cushion::LayOut(Picture& picture, const Node& node, unsigned int mode, Point position,
                     Point size, float height, float factor, const float* above)
{
    if (!node.cache)
        return;
    Cache& cache = *node.cache;
    cache.isExpanded = true;
    cache.isDiscarded = false;
    View& view = ViewOf(cache);
    cache.position = position;
    cache.size = size;
    const float x1 = position.x - picture.origin.x;
    const float x2 = x1 + size.x;
    const float y1 = position.y - picture.origin.y;
    const float y2 = y1 + size.y;
    std::copy(above, above + 4, cache.surface);
    cache.height = height;
    cache.scaleFactor = factor;
    cache.isCushionComputed = true;
    cache.lastMode = mode;
    if (node.parent && &node != picture.root) {
        const float a = mode == 0 ? x1 : y1;
        const float b = mode == 0 ? x2 : y2;
        float* const coefficients = cache.surface + (mode == 0 ? 0 : 2);
        if (b > a) {
            coefficients[0] += 4.0f * height * (a + b) / (b - a);
            coefficients[1] -= 4.0f * height / (b - a);
        }
    }
    if (node.children.empty()) {
        const float rectangle[4] = {x1, x2, y1, y2};
        Shade(picture, rectangle, cache);
    }
    const unsigned int next = (mode + 1) % 2;
    const float lower = next == 0 ? x1 : y1;
    const float upper = next == 0 ? x2 : y2;
    const float unit =
        cache.subtreeValue == 0 ? 0.0f : (upper - lower) / static_cast<float>(cache.subtreeValue);
    float start = lower;
    for (const Node* const child : node.children) {
        if (!child->cache)
            continue;
        const float end = start + static_cast<float>(child->cache->subtreeValue) * unit;
        const Point corner = next == 0 ? Point{start, y1} : Point{x1, start};
        const Point extent = next == 0 ? Point{end - start, y2 - y1} : Point{x2 - x1, end - start};
        LayOut(picture, *child, next, {corner.x + picture.origin.x, corner.y + picture.origin.y},
               extent, height * factor, factor, cache.surface);
        start = end;
    }
    view.InitWithoutTexture({(position.x - picture.origin.x) * picture.scale + picture.origin.x,
                             (position.y - picture.origin.y) * picture.scale + picture.origin.y},
                            {size.x * picture.scale, size.y * picture.scale});
}

// ---- shading

void Cushion::Shade(Picture& picture, const float* rectangle, const Cache& cache)
{
    const float x1 = rectangle[0] * picture.scale;
    const float x2 = rectangle[1] * picture.scale;
    const float y1 = rectangle[2] * picture.scale;
    const float y2 = rectangle[3] * picture.scale;
    if (!(x2 > x1 && y2 > y1))
        return;
    const long long right = std::min(Truncate(x2 - 0.5f), picture.width - 1);
    const long long top = std::min(Truncate(y2 - 0.5f), picture.height - 1);
    for (long long y = std::max(Truncate(y1 + 0.5f), 0LL); y <= top; ++y) {
        for (long long x = std::max(Truncate(x1 + 0.5f), 0LL); x <= right; ++x)
            ShadePixel(picture, x, y, cache);
    }
}

void Cushion::ShadePixel(Picture& picture, long long x, long long y, const Cache& cache)
{
    const float* const s = cache.surface;
    const float nx = -(2.0f * s[1] * (static_cast<float>(x) + 0.5f) + s[0]);
    const float ny = -(2.0f * s[3] * (static_cast<float>(y) + 0.5f) + s[2]);
    const float cosine =
        (0.09759f * nx + 0.19518f * ny + 0.9759f) * 215.0f / std::sqrt(nx * nx + ny * ny + 1.0f);
    const float light = (cosine > 0.0f ? cosine : 0.0f) + 40.0f;
    const auto intensity = static_cast<float>(std::min(Truncate(light), 255LL));
    long long index = 8;
    if (cache.colorsWithValue && cache.colorValue >= 0)
        index = std::min(cache.colorValue, 8LL);
    const unsigned int color = COLORS[index];
    unsigned char* const pixel =
        picture.pixels.data() + static_cast<std::size_t>((y * picture.width + x) * 4);
    const unsigned int bytes[3] = {color >> 16U & 0xFFU, color >> 8U & 0xFFU, color & 0xFFU};
    for (int i = 0; i < 3; ++i)
        pixel[i] = static_cast<unsigned char>(
            Truncate(intensity * (static_cast<float>(bytes[i]) / 255.0f)));
    pixel[3] = 255;
}

}  // namespace layoutReference
