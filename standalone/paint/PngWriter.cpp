#include "paint/PngWriter.h"

#include <zlib.h>

#include <algorithm>
#include <atomic>
#include <exception>
#include <new>
#include <thread>

namespace paint {

namespace {

constexpr int COMPRESSION_LEVEL = 3;
/// Large enough that a fresh start of the compression costs nothing, small enough that the blocks
/// of a screenful keep all cores busy.
constexpr std::size_t BLOCK_BYTES = 1U << 20U;

enum Filter : unsigned char { FILTER_SUB = 1, FILTER_UP = 2 };

void AppendBigEndian(std::string& bytes, std::uint32_t number)
{
    for (const unsigned int shift : {24U, 16U, 8U, 0U})
        bytes.push_back(static_cast<char>((number >> shift) & 0xFFU));
}

/// Sum of the bytes' distances from zero: the usual guess of how well a row will compress.
std::uint32_t Roughness(const std::vector<unsigned char>& row)
{
    // In 32 bits, which the longest row does not fill, several bytes go in one step.
    std::uint32_t sum = 0;
    for (const unsigned char byte : row) {
        const int distance = static_cast<signed char>(byte);
        sum += static_cast<std::uint32_t>(distance < 0 ? -distance : distance);
    }
    return sum;
}

void Subtract(const unsigned char* from, const unsigned char* what, std::size_t count,
              unsigned char* difference)
{
    for (std::size_t i = 0; i < count; ++i)
        difference[i] = static_cast<unsigned char>(from[i] - what[i]);
}

/// The rows of one block, each behind the number of its filter.
class FilteredRows {
public:
    FilteredRows(std::size_t rowBytes, std::size_t channels, std::size_t rows)
        : channels_(channels), current_(rowBytes), previous_(rowBytes), left_(rowBytes),
          up_(rowBytes)
    {
        bytes_.reserve((rowBytes + 1) * rows);
    }

    unsigned char* Row() { return current_.data(); }

    void Commit()
    {
        const std::size_t rest = current_.size() - channels_;
        std::copy_n(current_.begin(), channels_, left_.begin());
        Subtract(current_.data() + channels_, current_.data(), rest, left_.data() + channels_);
        bool useUp = false;
        // The first row of a block does not look back: blocks are made independently.
        if (!bytes_.empty()) {
            Subtract(current_.data(), previous_.data(), current_.size(), up_.data());
            useUp = Roughness(up_) <= Roughness(left_);
        }
        const std::vector<unsigned char>& chosen = useUp ? up_ : left_;
        bytes_.push_back(useUp ? FILTER_UP : FILTER_SUB);
        bytes_.insert(bytes_.end(), chosen.begin(), chosen.end());
        current_.swap(previous_);
    }

    const std::vector<unsigned char>& Bytes() const { return bytes_; }

private:
    std::size_t channels_;
    std::vector<unsigned char> current_;
    std::vector<unsigned char> previous_;
    std::vector<unsigned char> left_;
    std::vector<unsigned char> up_;
    std::vector<unsigned char> bytes_;
};

/// A raw deflate stream of `raw`; ends the whole stream with `isLast`, else stops at a byte.
std::string Deflate(const std::vector<unsigned char>& raw, bool isLast)
{
    z_stream stream{};
    constexpr int RAW_WINDOW = -15;
    constexpr int MOST_MEMORY = 9;
    if (deflateInit2(&stream, COMPRESSION_LEVEL, Z_DEFLATED, RAW_WINDOW, MOST_MEMORY,
                     Z_DEFAULT_STRATEGY) != Z_OK)
        throw std::bad_alloc();
    std::string compressed;
    try {
        // The bound is for a finished stream; a flushed one ends with an empty block more.
        compressed.resize(deflateBound(&stream, static_cast<uLong>(raw.size())) + 16);
    } catch (...) {
        deflateEnd(&stream);
        throw;
    }
    stream.next_in = const_cast<unsigned char*>(raw.data());
    stream.avail_in = static_cast<uInt>(raw.size());
    stream.next_out = reinterpret_cast<unsigned char*>(compressed.data());
    stream.avail_out = static_cast<uInt>(compressed.size());
    deflate(&stream, isLast ? Z_FINISH : Z_FULL_FLUSH);
    compressed.resize(stream.total_out);
    deflateEnd(&stream);
    // A hundred blocks may wait for their turn: none keeps the room that it did not need.
    compressed.shrink_to_fit();
    return compressed;
}

}  // namespace

PngWriter::PngWriter(std::string& file, int width, int height, Channels channels)
    : file_(file), width_(width), height_(height), channels_(static_cast<std::size_t>(channels))
{
    const std::size_t rowBytes = static_cast<std::size_t>(width) * channels_ + 1;
    blockRows_ = static_cast<int>(std::max<std::size_t>(1, BLOCK_BYTES / rowBytes));
    file_.append("\x89PNG\r\n\x1a\n", 8);
    std::string header;
    AppendBigEndian(header, static_cast<std::uint32_t>(width));
    AppendBigEndian(header, static_cast<std::uint32_t>(height));
    header.push_back(8);
    header.push_back(channels == Channels::Rgba ? 6 : 2);
    header.append(3, '\0');
    AddChunk("IHDR", header);
}

void PngWriter::AddChunk(const char* type, const std::string& data)
{
    AppendBigEndian(file_, static_cast<std::uint32_t>(data.size()));
    const std::size_t start = file_.size();
    file_.append(type, 4).append(data);
    const auto* const checked = reinterpret_cast<const unsigned char*>(file_.data()) + start;
    AppendBigEndian(file_, static_cast<std::uint32_t>(
                               crc32(0, checked, static_cast<uInt>(file_.size() - start))));
}

PngWriter::Block PngWriter::Compress(int firstRow, int endRow, const RowSource& source) const
{
    FilteredRows rows(static_cast<std::size_t>(width_) * channels_, channels_,
                      static_cast<std::size_t>(endRow - firstRow));
    for (int y = firstRow; y < endRow; ++y) {
        source(y, rows.Row());
        rows.Commit();
    }
    const std::vector<unsigned char>& raw = rows.Bytes();
    Block block;
    block.rawBytes = raw.size();
    block.adler = static_cast<std::uint32_t>(adler32(1, raw.data(), static_cast<uInt>(raw.size())));
    block.compressed = Deflate(raw, endRow == height_);
    return block;
}

void PngWriter::Add(int count, const RowSource& source)
{
    const int end = std::min(height_, nextRow_ + count);
    const int blockCount = (end - nextRow_ + blockRows_ - 1) / blockRows_;
    if (blockCount <= 0)
        return;
    std::vector<Block> blocks(static_cast<std::size_t>(blockCount));
    std::atomic<int> nextBlock{0};
    std::atomic<bool> failed{false};
    const auto work = [&] {
        try {
            for (int i = nextBlock++; i < blockCount; i = nextBlock++) {
                const int first = nextRow_ + i * blockRows_;
                blocks[static_cast<std::size_t>(i)] =
                    Compress(first, std::min(end, first + blockRows_), source);
            }
        } catch (...) {
            failed = true;
        }
    };
    const int cores = static_cast<int>(std::clamp(std::thread::hardware_concurrency(), 1U, 16U));
    std::vector<std::thread> threads;
    try {
        for (int i = 1; i < std::min(cores, blockCount); ++i)
            threads.emplace_back(work);
    } catch (const std::exception&) {
        // Fewer threads do the same work.
    }
    work();
    for (std::thread& thread : threads)
        thread.join();
    if (failed)
        throw std::bad_alloc();

    for (const Block& block : blocks) {
        const bool isFirst = nextRow_ == 0;
        nextRow_ = std::min(end, nextRow_ + blockRows_);
        adler_ = static_cast<std::uint32_t>(
            adler32_combine(adler_, block.adler, static_cast<z_off_t>(block.rawBytes)));
        std::string data = isFirst ? std::string("\x78\x5e", 2) : std::string();
        data += block.compressed;
        if (nextRow_ == height_)
            AppendBigEndian(data, adler_);
        AddChunk("IDAT", data);
    }
    if (nextRow_ == height_)
        AddChunk("IEND", {});
}

}  // namespace paint
