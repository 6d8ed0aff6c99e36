#include "OutputFile.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace dataviz {

namespace {

namespace fs = std::filesystem;

std::string CannotWrite(int error)
{
    return std::string("cannot be written: ") + std::strerror(error);
}

/// A temporary file is private; the finished one has the rights of any new file.
void GrantUsualRights(int descriptor)
{
    const mode_t mask = umask(0);
    umask(mask);
    constexpr mode_t EVERYBODY = 0666;
    fchmod(descriptor, EVERYBODY & ~mask);
}

/// The name behind symbolic links, so that a link stays one and its target is replaced.
std::string Resolved(const std::string& target)
{
    std::error_code error;
    const fs::path path = fs::canonical(target, error);
    return error ? target : path.string();
}

}  // namespace

OutputFile::~OutputFile()
{
    if (!temporary_.empty())
        unlink(temporary_.c_str());
}

std::string OutputFile::Open(const std::string& target)
{
    target_ = target == "-" ? target : Resolved(target);
    struct stat status {};
    const bool exists = target != "-" && stat(target_.c_str(), &status) == 0;
    if (exists && S_ISDIR(status.st_mode))
        return CannotWrite(EISDIR);
    if (exists && S_ISREG(status.st_mode) && access(target_.c_str(), W_OK) != 0)
        return CannotWrite(errno);
    isCopied_ = target == "-" || (exists && !S_ISREG(status.st_mode));
    fs::path path;
    if (isCopied_) {
        const char* const folder = std::getenv("TMPDIR");
        path = fs::path(folder != nullptr && *folder != '\0' ? folder : "/tmp") / ".dataviz.XXXXXX";
    } else {
        const fs::path file(target_);
        // The name may already be as long as names can be; a short one always fits.
        path = file.parent_path() / ("." + file.filename().string().substr(0, 100) + ".XXXXXX");
    }
    std::string name = path.string();
    const int descriptor = mkostemp(name.data(), O_CLOEXEC);
    if (descriptor < 0)
        return CannotWrite(errno);
    temporary_ = name;
    if (!isCopied_)
        GrantUsualRights(descriptor);
    close(descriptor);
    return {};
}

std::string OutputFile::CopyTo(int descriptor) const
{
    const int source = open(temporary_.c_str(), O_RDONLY | O_CLOEXEC);
    if (source < 0)
        return CannotWrite(errno);
    std::vector<char> buffer(std::size_t{1} << 20U);
    std::string problem;
    for (;;) {
        const ssize_t count = read(source, buffer.data(), buffer.size());
        if (count < 0)
            problem = CannotWrite(errno);
        if (count <= 0)
            break;
        ssize_t done = 0;
        while (done < count) {
            const ssize_t written =
                write(descriptor, buffer.data() + done, static_cast<std::size_t>(count - done));
            if (written < 0 && errno != EINTR)
                break;
            done += written > 0 ? written : 0;
        }
        if (done < count) {
            problem = CannotWrite(errno);
            break;
        }
    }
    close(source);
    return problem;
}

std::string OutputFile::Commit()
{
    if (!isCopied_) {
        if (std::rename(temporary_.c_str(), target_.c_str()) != 0)
            return CannotWrite(errno);
        temporary_.clear();
        return {};
    }
    if (target_ == "-")
        return CopyTo(STDOUT_FILENO);
    const int descriptor = open(target_.c_str(), O_WRONLY | O_CLOEXEC);
    if (descriptor < 0)
        return CannotWrite(errno);
    std::string problem = CopyTo(descriptor);
    if (close(descriptor) != 0 && problem.empty())
        problem = CannotWrite(errno);
    return problem;
}

}  // namespace dataviz
