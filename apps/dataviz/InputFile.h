#pragma once

#include <cstddef>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>

namespace dataviz {

struct CloseFile {
    void operator()(std::FILE* file) const
    {
        if (file != stdin)
            std::fclose(file);
    }
};
using FileHolder = std::unique_ptr<std::FILE, CloseFile>;

/// Opens a file to read, "-" being standard input; null when it cannot be opened (errno says why).
FileHolder OpenInput(const std::string& path);

/// Appends up to `most` bytes; false when reading fails.
bool ReadInto(std::string& text, std::FILE* file, std::size_t most);

/// "cannot be read: " and what errno says.
std::string CannotRead();

/// Reads a whole file; gives the reason when it cannot be read.
std::optional<std::string> ReadInputFile(const std::string& path, std::string& text);

}  // namespace dataviz
