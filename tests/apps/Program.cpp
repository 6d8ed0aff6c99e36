#include "Program.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <thread>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace dataviz::tests {

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr int SIGNALLED = 1000;

void Redirect(const std::string& path, int flags, int descriptor)
{
    const int file = open(path.c_str(), flags, 0600);
    if (file < 0 || dup2(file, descriptor) < 0)
        _exit(126);
}

pid_t Start(const std::vector<std::string>& words, const ScratchFolder& folder)
{
    std::vector<std::string> copies{KUV_DATAVIZ_PROGRAM};
    copies.insert(copies.end(), words.begin(), words.end());
    std::vector<char*> pointers;
    for (std::string& word : copies)
        pointers.push_back(word.data());
    pointers.push_back(nullptr);
    const pid_t child = fork();
    if (child != 0)
        return child;
    Redirect(folder / "in", O_RDONLY, STDIN_FILENO);
    Redirect(folder / "out", O_WRONLY | O_CREAT, STDOUT_FILENO);
    Redirect(folder / "err", O_WRONLY | O_CREAT, STDERR_FILENO);
    execv(pointers[0], pointers.data());
    _exit(127);
}

}  // namespace

ProgramRun RunProgram(const std::vector<std::string>& words, const std::string& input,
                      const std::function<bool()>& isTime)
{
    const ScratchFolder folder;
    folder.Write("in", input);
    const pid_t child = Start(words, folder);
    if (child < 0)
        throw std::runtime_error("cannot start the program");
    if (isTime) {
        const auto pause = std::chrono::milliseconds(20);
        for (int i = 0; i < 1000 && !isTime(); ++i)
            std::this_thread::sleep_for(pause);
        std::this_thread::sleep_for(25 * pause);
        kill(child, SIGINT);
    }
    const Clock::time_point start = Clock::now();
    int status = 0;
    waitpid(child, &status, 0);
    ProgramRun run;
    run.seconds = std::chrono::duration<double>(Clock::now() - start).count();
    run.status = WIFEXITED(status) ? WEXITSTATUS(status) : SIGNALLED + WTERMSIG(status);
    run.output = ReadFile(folder / "out");
    run.errors = ReadFile(folder / "err");
    return run;
}

ScratchFolder::ScratchFolder()
{
    std::string pattern = (fs::temp_directory_path() / "dataviz-test-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr)
        throw std::runtime_error("no temporary folder");
    path_ = pattern;
}

ScratchFolder::~ScratchFolder()
{
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

std::string ScratchFolder::Write(const std::string& name, const std::string& text) const
{
    std::ofstream(*this / name, std::ios::binary) << text;
    return *this / name;
}

std::vector<std::string> ScratchFolder::Entries() const
{
    std::vector<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(path_))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

std::string ReadFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

fs::path SampleModels()
{
    const char* const folder = std::getenv("KUV_MODELS");
    return folder != nullptr ? folder : KUV_MODELS_DEFAULT;
}

}  // namespace dataviz::tests
