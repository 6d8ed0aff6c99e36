#pragma once

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

namespace dataviz {

/// "cannot be written", with the system's reason for the last failure.
inline std::string WriteReason()
{
    return std::string("cannot be written: ") + std::strerror(errno);
}

/// Opens a file, calls `write` with its stream and closes it. Empty on success, else the reason in
/// words, a full disk that shows only at the end included.
template <typename Write>
std::string WriteFile(const std::string& path, const Write& write)
{
    std::FILE* const file = std::fopen(path.c_str(), "wbe");
    if (file == nullptr)
        return WriteReason();
    errno = 0;
    write(file);
    const bool failed = std::fflush(file) != 0 || std::ferror(file) != 0;
    std::string problem = failed ? WriteReason() : "";
    if (std::fclose(file) != 0 && problem.empty())
        problem = WriteReason();
    return problem;
}

}  // namespace dataviz
