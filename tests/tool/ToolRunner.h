// Runs qzexpand in a folder of its own and collects everything that it leaves behind.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include <sys/types.h>

#if defined(__SANITIZE_ADDRESS__)
#define QZ_SANITIZED
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define QZ_SANITIZED
#endif
#endif

namespace tool_test {

// How a run has ended: what it wrote to its two streams, and its exit status. A run that a signal
// has ended has the negative number of the signal as its status.
struct Result {
    int status = 0;
    std::string out;
    std::string err;

    bool operator==(const Result&) const = default;
};

void PrintTo(const Result& result, std::ostream* os);

// A run in progress. Its streams are read until they end; a run that does not end is killed after
// two minutes, which shows as status -9.
class Process {
public:
    // setUp is called in the new process, in front of the program.
    Process(const std::filesystem::path& folder, const std::vector<std::string>& arguments,
            const std::string& input, const std::function<void()>& setUp,
            const std::string& program = QZEXPAND);
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    void Signal(int signal) const;

    // Waits until the process has written something.
    void WaitForOutput();

    Result Wait();

private:
    void Drain();

    pid_t m_pid = -1;
    int m_out = -1;
    int m_err = -1;
    Result m_result;
};

// A test in a fresh folder, which is the working directory of the tool, so that no path of the
// machine shows in its messages.
class ToolTest : public testing::Test {
protected:
    ToolTest();
    ~ToolTest() override;

    // Writes and reads files of the folder; folders in between are made.
    void Write(const std::string& name, const std::string& content) const;
    std::string Read(const std::string& name) const;
    bool Exists(const std::string& name) const;

    // The names of everything in the folder, in order: a temporary file left behind shows here.
    std::vector<std::string> FileNames() const;

    std::filesystem::path PathOf(const std::string& name) const { return m_folder / name; }

    // Runs the tool to its end.
    Result Run(const std::vector<std::string>& arguments, const std::string& input = "",
               const std::function<void()>& setUp = {}) const;

    // The same for another program, by its path.
    Result RunProgram(const std::string& program, const std::vector<std::string>& arguments,
                      const std::string& input = "") const;

    std::filesystem::path m_folder;
};

// What a wrong call leaves behind.
Result WrongCall(const std::string& message);

// Redirects a stream of the new process; for setUp.
std::function<void()> Redirect(int fd, const std::string& path);

}  // namespace tool_test
