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

    /// Where to write. Any process may do so until `Commit`.
    const std::string& TemporaryPath() const { return temporary_; }

    /// Gives the file its name. Empty on success, else the reason in words.
    std::string Commit();

private:
    std::string CopyTo(int descriptor) const;

    std::string target_;
    std::string temporary_;  // empty when there is none
    bool isCopied_ = false;
};

}  // namespace dataviz
