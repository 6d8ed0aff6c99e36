#include "InputFile.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>

namespace dataviz {

FileHolder OpenInput(const std::string& path)
{
    return FileHolder(path == "-" ? stdin : std::fopen(path.c_str(), "rbe"));
}

bool ReadInto(std::string& text, std::FILE* file, std::size_t most)
{
    constexpr std::size_t PIECE = std::size_t{1} << 20U;
    while (most > 0) {
        const std::size_t start = text.size();
        const std::size_t wanted = std::min(most, PIECE);
        text.resize(start + wanted);
        const std::size_t count = std::fread(text.data() + start, 1, wanted, file);
        text.resize(start + count);
        most -= count;
        if (count < wanted)
            return std::ferror(file) == 0;
    }
    return true;
}

std::string CannotRead() { return std::string("cannot be read: ") + std::strerror(errno); }

std::optional<std::string> ReadInputFile(const std::string& path, std::string& text)
{
    std::error_code error;
    if (std::filesystem::is_directory(path, error))
        return "is a directory";
    const FileHolder file = OpenInput(path);
    if (!file || !ReadInto(text, file.get(), static_cast<std::size_t>(-1)))
        return CannotRead();
    return std::nullopt;
}

}  // namespace dataviz
