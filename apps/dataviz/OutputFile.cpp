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
    fs::path path = fs::canonical(target, error);
    if (!error)
        return path.string();
    // There is no file yet, but there may be links that say where it belongs.
    constexpr int MOST_LINKS = 40;
    path = target;
    for (int i = 0; i < MOST_LINKS && fs::is_symlink(path, error); ++i)
        path = path.parent_path() / fs::read_symlink(path, error);
    return path.string();
}

}  // namespace

OutputFile::~OutputFile()
{
    if (source_ >= 0)
        close(source_);
    else if (!temporary_.empty())
        unlink(temporary_.c_str());
}

std::string OutputFile::Open(const std::string& target)
{
    target_ = target == "-" ? target : Resolved(target);
    struct stat status {};
    errno = 0;
    const bool exists = target != "-" && stat(target_.c_str(), &status) == 0;
    if (!exists && errno == ELOOP)
        return CannotWrite(errno);
    if (exists && S_ISDIR(status.st_mode))
        return CannotWrite(EISDIR);
    if (exists && access(target_.c_str(), W_OK) != 0)
        return CannotWrite(errno);
    const bool isCopied = target == "-" || (exists && !S_ISREG(status.st_mode));
    return isCopied ? OpenNameless() : OpenBesideTarget();
}

std::string OutputFile::OpenBesideTarget()
{
    const fs::path file(target_);
    // The name may already be as long as names can be; a short one always fits.
    constexpr std::size_t LONGEST = 100;
    std::string name =
        (file.parent_path() / ("." + file.filename().string().substr(0, LONGEST) + ".XXXXXX"))
            .string();
    const int descriptor = mkostemp(name.data(), O_CLOEXEC);
    if (descriptor < 0)
        return CannotWrite(errno);
    temporary_ = name;
    GrantUsualRights(descriptor);
    close(descriptor);
    return {};
}

std::string OutputFile::OpenNameless()
{
    const char* const folder = std::getenv("TMPDIR");
    std::string name =
        (fs::path(folder != nullptr && *folder != '\0' ? folder : "/tmp") / ".dataviz.XXXXXX")
            .string();
    source_ = mkostemp(name.data(), O_CLOEXEC);
    if (source_ < 0)
        return CannotWrite(errno);
    unlink(name.c_str());
    temporary_ = "/proc/self/fd/" + std::to_string(source_);
    return {};
}

std::string OutputFile::CopyTo(int descriptor) const
{
    if (lseek(source_, 0, SEEK_SET) < 0)
        return CannotWrite(errno);
    std::vector<char> buffer(std::size_t{1} << 20U);
    std::string problem;
    for (;;) {
        const ssize_t count = read(source_, buffer.data(), buffer.size());
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
    return problem;
}

std::string OutputFile::Commit()
{
    if (!IsCopied()) {
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
