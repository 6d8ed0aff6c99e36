#pragma once

#include <string>

namespace dataviz {

/// A file that appears under its name only when it is complete.
///
/// The bytes go to a temporary file beside the target, which is renamed over it at the end. Where
/// the target is standard output ("-"), a device or a pipe, the temporary file stands in the
/// temporary folder and is copied at the end. Without `Commit` nothing is left behind.
class OutputFile {
public:
    OutputFile() = default;
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;
    /// Takes the temporary file away.
    ~OutputFile();

    /// Makes the temporary file for a target. Empty on success, else the reason in words.
    std::string Open(const std::string& target);

    /// Where to write. This process and those that it forks may do so until `Commit`.
    const std::string& TemporaryPath() const { return temporary_; }

    /// Whether `Commit` copies the file, which may take as long as its reader likes.
    bool IsCopied() const { return source_ >= 0; }

    /// Gives the file its name. Empty on success, else the reason in words.
    std::string Commit();

private:
    std::string OpenBesideTarget();
    std::string OpenNameless();
    std::string CopyTo(int descriptor) const;

    std::string target_;
    std::string temporary_;  // empty when there is none
    int source_ = -1;        // the nameless file
};

}  // namespace dataviz
