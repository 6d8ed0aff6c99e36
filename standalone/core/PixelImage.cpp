#include "core/ImageBackend.h"
#include "core/PixelMemory.h"

#include "KUV2D.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace {

std::atomic<core::PixelAllocationHook> allocationHook{nullptr};
std::atomic<std::size_t> bufferCount{0};
std::atomic<std::size_t> imageBytes{0};

std::shared_ptr<core::ImageBackend>& Backend()
{
    static std::shared_ptr<core::ImageBackend> backend;
    return backend;
}

std::size_t BytesPerPixel(KUVPixelFormat format)
{
    switch (format) {
    case KUVPixelFormat_Grey8:
        return 1;
    case KUVPixelFormat_RGB8:
        return 3;
    case KUVPixelFormat_RGBA8:
        return 4;
    }
    return 0;
}

/// Sizes up to 2^31 - 1 times 4 bytes fit into 64 bits.
std::size_t ByteCount(int width, int height, KUVPixelFormat format)
{
    return static_cast<std::size_t>(width) * static_cast<std::size_t>(height) *
           BytesPerPixel(format);
}

KUVColor ReadPixel(const unsigned char* pixel, KUVPixelFormat format)
{
    if (format == KUVPixelFormat_Grey8)
        return {pixel[0], pixel[0], pixel[0], 255};
    return {pixel[0], pixel[1], pixel[2],
            format == KUVPixelFormat_RGBA8 ? pixel[3] : static_cast<unsigned char>(255)};
}

void WritePixel(KUVColor color, unsigned char* pixel, KUVPixelFormat format)
{
    if (format == KUVPixelFormat_Grey8) {
        // The luma weights of Rec. 601, in 256ths; they add up to 256.
        pixel[0] =
            static_cast<unsigned char>((77U * color.r + 150U * color.g + 29U * color.b) >> 8U);
        return;
    }
    pixel[0] = color.r;
    pixel[1] = color.g;
    pixel[2] = color.b;
    if (format == KUVPixelFormat_RGBA8)
        pixel[3] = color.a;
}

/// The rows of a buffer that differ from all rows before them.
class DifferentRows {
public:
    explicit DifferentRows(std::size_t rowBytes) : rowBytes_(rowBytes) {}

    /// The number, counted from 0, of the different row that `row` is or equals. The rows stay
    /// where they are while this is asked.
    unsigned int NumberOf(const unsigned char* row)
    {
        const std::string_view bytes(reinterpret_cast<const char*>(row), rowBytes_);
        // Neighbours are equal more often than not, and plates have five different rows in all.
        const auto recent = std::find(recent_.begin(), recent_.end(), bytes);
        if (recent != recent_.end())
            return static_cast<unsigned int>(recent - recent_.begin());
        if (recent_.size() < MOST_SEARCHED) {
            recent_.push_back(bytes);
            return count_++;
        }
        const auto [entry, isNew] = others_.try_emplace(bytes, count_);
        count_ += isNew;
        return entry->second;
    }

    std::size_t Count() const { return count_; }

private:
    static constexpr std::size_t MOST_SEARCHED = 8;

    std::size_t rowBytes_;
    unsigned int count_ = 0;
    /// The first few, compared one by one.
    std::vector<std::string_view> recent_;
    /// All others, by hash.
    std::unordered_map<std::string_view, unsigned int> others_;
};

}  // namespace

KUV_IMPLEMENT_CLASS(KUVPixelImage, KUVBaseUnknown, "KUVHost")

// ---- memory

void core::SetPixelAllocationHook(PixelAllocationHook hook) { allocationHook.store(hook); }

std::size_t core::CountPixelBuffers() { return bufferCount.load(); }

std::size_t core::SumImageBytes() { return imageBytes.load(); }

unsigned char* KUVAllocatePixels(std::size_t bytes)
{
    const core::PixelAllocationHook hook = allocationHook.load();
    if (hook && !hook(bytes))
        return nullptr;
    void* const buffer = std::malloc(std::max<std::size_t>(bytes, 1));
    if (buffer)
        ++bufferCount;
    return static_cast<unsigned char*>(buffer);
}

void KUVFreePixels(unsigned char* pixels)
{
    if (!pixels)
        return;
    --bufferCount;
    std::free(pixels);
}

// ---- rows

std::size_t KUVPixelImage::RowBytes() const
{
    return static_cast<std::size_t>(width_) * BytesPerPixel(format_);
}

/// Takes over `buffer`, which holds all rows, in the place of what the image had.
void KUVPixelImage::Take(int width, int height, KUVPixelFormat format,
                         unsigned char* buffer) noexcept
{
    KUVFreePixels(pixels_);
    imageBytes -= byteCost_;
    pixels_ = buffer;
    rowPlaces_.reset();
    width_ = width;
    height_ = height;
    format_ = format;
    byteCost_ = sizeof(KUVPixelImage) + ByteCount(width, height, format);
    if (pixels_)
        KeepEqualRowsOnce();
    imageBytes += byteCost_;
}

/// Works inside the buffer, so that a large image never needs its memory twice. Without memory for
/// the tables the rows stay as they are.
void KUVPixelImage::KeepEqualRowsOnce() noexcept
{
    const auto height = static_cast<std::size_t>(height_);
    const std::size_t rowBytes = RowBytes();
    std::unique_ptr<unsigned int[]> places(new (std::nothrow) unsigned int[height]);
    if (!places)
        return;
    std::size_t kept = 0;
    try {
        DifferentRows rows(rowBytes);
        for (std::size_t y = 0; y < height; ++y)
            places[y] = rows.NumberOf(pixels_ + rowBytes * y);
        kept = rows.Count();
    } catch (const std::bad_alloc&) {
        return;
    }
    if (kept == height)
        return;
    // Different rows are numbered in order, so a row only ever moves towards the beginning.
    unsigned int next = 0;
    for (std::size_t y = 0; y < height; ++y) {
        if (places[y] == next)
            std::memmove(pixels_ + rowBytes * next++, pixels_ + rowBytes * y, rowBytes);
    }
    rowPlaces_ = std::move(places);
    if (void* const smaller = std::realloc(pixels_, kept * rowBytes))
        pixels_ = static_cast<unsigned char*>(smaller);
    byteCost_ = sizeof(KUVPixelImage) + kept * rowBytes + height * sizeof(unsigned int);
}

// ---- KUVPixelImage

KUVPixelImage::KUVPixelImage(int width, int height, KUVPixelFormat format, unsigned char* pixels,
                             int deallocate) noexcept
    : format_(format)
{
    unsigned char* buffer = deallocate ? pixels : nullptr;
    const bool hasPixels = width > 0 && height > 0 && pixels && BytesPerPixel(format) > 0;
    if (hasPixels && !deallocate) {
        const std::size_t bytes = ByteCount(width, height, format);
        buffer = KUVAllocatePixels(bytes);
        if (buffer)
            std::memcpy(buffer, pixels, bytes);
    }
    if (hasPixels && buffer) {
        Take(width, height, format, buffer);
        return;
    }
    KUVFreePixels(buffer);
    Take(0, 0, format, nullptr);
}

KUVPixelImage::~KUVPixelImage()
{
    KUVFreePixels(pixels_);
    imageBytes -= byteCost_;
}

void core::SetImageBackend(std::shared_ptr<ImageBackend> backend)
{
    Backend() = std::move(backend);
}

KUVPixelImage* KUVPixelImage::CreateFromFileEx(const KUVUnicodeString& path, int /*convert*/,
                                               int /*reserved*/)
{
    const std::shared_ptr<core::ImageBackend> backend = Backend();
    if (!backend || path.IsEmpty())
        return nullptr;
    try {
        return backend->Load(std::string(path.GetUtf8(), path.GetByteCount()));
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

KUVResult KUVPixelImage::ChangeFormat(KUVPixelFormat format)
{
    const std::size_t step = BytesPerPixel(format);
    if (step == 0)
        return KUV_FAIL;
    if (format == format_)
        return KUV_OK;
    if (!pixels_) {
        format_ = format;
        return KUV_OK;
    }
    unsigned char* const converted = KUVAllocatePixels(ByteCount(width_, height_, format));
    if (!converted)
        return KUV_FAIL;
    unsigned char* to = converted;
    const std::size_t fromStep = BytesPerPixel(format_);
    for (int y = 0; y < height_; ++y) {
        const unsigned char* from = GetRow(y);
        for (int x = 0; x < width_; ++x, from += fromStep, to += step)
            WritePixel(ReadPixel(from, format_), to, format);
    }
    Take(width_, height_, format, converted);
    return KUV_OK;
}

void KUVPixelImage::GetSize(int& width, int& height) const
{
    width = width_;
    height = height_;
}

const unsigned char* KUVPixelImage::GetRow(int y) const
{
    if (y < 0 || y >= height_)
        return nullptr;
    const auto row = static_cast<std::size_t>(y);
    return pixels_ + RowBytes() * (rowPlaces_ ? rowPlaces_[row] : row);
}

std::size_t KUVPixelImage::GetByteCost() const { return byteCost_; }
