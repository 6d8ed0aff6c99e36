#ifndef paint_PngWriter_h
#define paint_PngWriter_h

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace paint {

/// Writes a PNG file piece by piece, compressing on all cores.
///
/// Qt's own writer takes several times as long for the large flat areas of these pictures: it tries
/// every filter on every row and compresses on one core. Here each block of rows is an independent
/// piece of the compressed stream, rows choose between two filters, and the compression is a level
/// that costs about a tenth in size. The bytes do not depend on the number of cores.
class PngWriter {
public:
    /// Bytes of one pixel: red, green, blue, and alpha with 4.
    enum class Channels { Rgb = 3, Rgba = 4 };
    /// Puts the bytes of row `y` (0 at the top) into `row`. Called from several threads.
    using RowSource = std::function<void(int y, unsigned char* row)>;

    /// Appends to `file`, which must outlive the writer. Sizes are at least 1.
    PngWriter(std::string& file, int width, int height, Channels channels);

    /// Rows that are compressed together; calls of `Add` take a multiple of it, except the last.
    int GetBlockRows() const { return blockRows_; }
    /// Adds the next `count` rows, numbered on from those before. After the last row of the picture
    /// the file is complete. Throws `std::bad_alloc`.
    void Add(int count, const RowSource& source);

private:
    struct Block {
        std::string compressed;
        std::uint32_t adler = 0;
        std::size_t rawBytes = 0;
    };

    void AddChunk(const char* type, const std::string& data);
    Block Compress(int firstRow, int endRow, const RowSource& source) const;

    std::string& file_;
    int width_;
    int height_;
    std::size_t channels_;
    int blockRows_;
    int nextRow_ = 0;
    std::uint32_t adler_ = 1;
};

}  // namespace paint

#endif
