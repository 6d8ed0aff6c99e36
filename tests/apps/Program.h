#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace dataviz::tests {

/// How a run of the program ended.
struct ProgramRun {
    int status = -1;  ///< exit status; 1000 + signal when a signal ended it
    std::string output;
    std::string errors;
    double seconds = 0;
};

/// Runs `dataviz` with these words and waits for it. `input` is its standard input. The program
/// gets a SIGINT half a second after `isTime` holds, if that is given; `seconds` counts from there.
ProgramRun RunProgram(const std::vector<std::string>& words, const std::string& input = {},
                      const std::function<bool()>& isTime = {});

/// A folder of its own for a test, removed with everything in it.
class ScratchFolder {
public:
    ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    ~ScratchFolder();

    /// The full name of a file in the folder.
    std::string operator/(const std::string& name) const { return (path_ / name).string(); }
    /// Writes a file and gives its full name.
    std::string Write(const std::string& name, const std::string& text) const;
    /// Names of all entries, hidden ones included, in order.
    std::vector<std::string> Entries() const;

private:
    std::filesystem::path path_;
};

std::string ReadFile(const std::string& path);

/// The folder of the sample models; it may be absent.
std::filesystem::path SampleModels();

}  // namespace dataviz::tests
