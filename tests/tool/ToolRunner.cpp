#include "ToolRunner.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tool_test {

namespace fs = std::filesystem;

void PrintTo(const Result& result, std::ostream* os) {
    *os << "status " << result.status << "\nout " << testing::PrintToString(result.out) << "\nerr "
        << testing::PrintToString(result.err);
}

namespace {

struct Pipe {
    int read = -1;
    int write = -1;

    Pipe() {
        std::array<int, 2> ends{};
        if (::pipe2(ends.data(), O_CLOEXEC) != 0)
            throw std::runtime_error("no pipe");
        read = ends[0];
        write = ends[1];
    }
};

// A file with the input is simpler than a pipe: it needs nobody who feeds it.
int OpenInput(const std::string& input) {
    const int fd = ::memfd_create("input", MFD_CLOEXEC);
    for (std::size_t done = 0; done < input.size();) {
        const ssize_t n = ::write(fd, input.data() + done, input.size() - done);
        if (n < 0)
            throw std::runtime_error("the input can't be written");
        done += static_cast<std::size_t>(n);
    }
    ::lseek(fd, 0, SEEK_SET);
    return fd;
}

[[noreturn]] void Execute(std::string program, const fs::path& folder,
                          const std::vector<std::string>& arguments,
                          const std::function<void()>& setUp) {
    std::vector<std::string> copies = arguments;
    std::vector<char*> argv = {program.data()};
    for (std::string& argument : copies)
        argv.push_back(argument.data());
    argv.push_back(nullptr);
    if (::chdir(folder.c_str()) == 0) {
        if (setUp)
            setUp();
        ::execv(program.c_str(), argv.data());
    }
    ::_exit(127);
}

void CloseDescriptor(int& fd) {
    if (fd >= 0)
        ::close(fd);
    fd = -1;
}

}  // namespace

Process::Process(const fs::path& folder, const std::vector<std::string>& arguments,
                 const std::string& input, const std::function<void()>& setUp,
                 const std::string& program) {
    Pipe out;
    Pipe err;
    int in = OpenInput(input);
    m_pid = ::fork();
    if (m_pid == 0) {
        ::dup2(in, STDIN_FILENO);
        ::dup2(out.write, STDOUT_FILENO);
        ::dup2(err.write, STDERR_FILENO);
        Execute(program, folder, arguments, setUp);
    }
    CloseDescriptor(in);
    CloseDescriptor(out.write);
    CloseDescriptor(err.write);
    m_out = out.read;
    m_err = err.read;
}

Process::~Process() {
    CloseDescriptor(m_out);
    CloseDescriptor(m_err);
    if (m_pid > 0) {
        ::kill(m_pid, SIGKILL);
        ::waitpid(m_pid, nullptr, 0);
    }
}

void Process::Signal(int signal) const {
    ::kill(m_pid, signal);
}

void Process::WaitForOutput() {
    std::array<pollfd, 2> polled = {
        pollfd{m_out, POLLIN, 0},
        pollfd{m_err, POLLIN, 0}
    };
    ::poll(polled.data(), polled.size(), 60'000);
}

// Reads both streams until the process has closed them, or the time is over.
void Process::Drain() {
    using Clock = std::chrono::steady_clock;
    const Clock::time_point end = Clock::now() + std::chrono::minutes(2);
    std::vector<char> part(1 << 16);
    while ((m_out >= 0 || m_err >= 0) && Clock::now() < end) {
        std::array<pollfd, 2> polled = {
            pollfd{m_out, POLLIN, 0},
            pollfd{m_err, POLLIN, 0}
        };
        ::poll(polled.data(), polled.size(), 1000);
        for (const pollfd& p : polled) {
            if (p.revents == 0)
                continue;
            int& fd = p.fd == m_out ? m_out : m_err;
            std::string& text = p.fd == m_out ? m_result.out : m_result.err;
            const ssize_t n = ::read(fd, part.data(), part.size());
            if (n > 0)
                text.append(part.data(), static_cast<std::size_t>(n));
            else
                CloseDescriptor(fd);
        }
    }
    if (Clock::now() >= end)
        ::kill(m_pid, SIGKILL);
}

Result Process::Wait() {
    Drain();
    int status = 0;
    ::waitpid(m_pid, &status, 0);
    m_pid = -1;
    m_result.status = WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
    return m_result;
}

// ---- the folder --------------------------------------------------------------------------------

ToolTest::ToolTest() {
    std::string name = (fs::temp_directory_path() / "qzexpand_test.XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr)
        throw std::runtime_error("no temporary folder");
    m_folder = fs::canonical(name);
}

ToolTest::~ToolTest() {
    fs::remove_all(m_folder);
}

void ToolTest::Write(const std::string& name, const std::string& content) const {
    fs::create_directories(PathOf(name).parent_path());
    std::ofstream(PathOf(name), std::ios::binary) << content;
}

std::string ToolTest::Read(const std::string& name) const {
    std::ifstream file(PathOf(name), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

bool ToolTest::Exists(const std::string& name) const {
    return fs::exists(PathOf(name));
}

std::vector<std::string> ToolTest::FileNames() const {
    std::vector<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(m_folder))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

Result ToolTest::Run(const std::vector<std::string>& arguments, const std::string& input,
                     const std::function<void()>& setUp) const {
    return Process(m_folder, arguments, input, setUp).Wait();
}

Result ToolTest::RunProgram(const std::string& program, const std::vector<std::string>& arguments,
                            const std::string& input) const {
    return Process(m_folder, arguments, input, {}, program).Wait();
}

Result WrongCall(const std::string& message) {
    return Result{2, "",
                  "qzexpand: " + message
                      + "\n"
                        "usage: qzexpand [OPTION]... [FILE]\n"
                        "       qzexpand [OPTION]... -o FOLDER FILE...\n"
                        "       qzexpand [OPTION]... --eval EXPRESSION\n"
                        "Try 'qzexpand --help' for more.\n"};
}

std::function<void()> Redirect(int fd, const std::string& path) {
    return [fd, path] {
        const int file = ::open(path.c_str(), O_WRONLY);
        ::dup2(file, fd);
    };
}

}  // namespace tool_test
