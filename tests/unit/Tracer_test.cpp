#include "qzUtils/Tracer.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#include <pthread.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include "tests/support/Text.h"

namespace {

using vorn::TracerX;

static_assert(std::is_base_of_v<vorn::StringStream, TracerX>);
static_assert(std::is_constructible_v<TracerX, vorn::ssize_t>);

// Standard error leads to the given descriptor, which is closed, for as long as this lives.
class StandardErrorTo {
public:
    explicit StandardErrorTo(int fd) : m_saved(::dup(STDERR_FILENO)) {
        std::fflush(stderr);
        ::dup2(fd, STDERR_FILENO);
        ::close(fd);
    }
    ~StandardErrorTo() {
        ::dup2(m_saved, STDERR_FILENO);
        ::close(m_saved);
    }
    StandardErrorTo(const StandardErrorTo&) = delete;
    StandardErrorTo& operator=(const StandardErrorTo&) = delete;

private:
    int m_saved;
};

// What action writes to standard error, one entry for each write.
template <class Action>
std::vector<std::string> WritesOf(Action&& action) {
    int ends[2];
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends) != 0)
        return {"no socket"};
    {
        const StandardErrorTo redirection(ends[1]);
        action();
    }
    std::vector<std::string> writes;
    std::string packet(1 << 20, '\0');
    for (vorn::ssize_t n = 0; (n = ::recv(ends[0], packet.data(), packet.size(), 0)) > 0;)
        writes.push_back(packet.substr(0, static_cast<std::size_t>(n)));
    ::close(ends[0]);
    return writes;
}

void Trace(vorn::SubString text) {
    TracerX trace(4096);
    trace << text;
}

TEST(TracerTest, WritesNothingBeforeItsEnd) {
    const std::vector<std::string> writes = WritesOf([] {
        TracerX trace(4096);
        trace << "a report";
        trace.flush();
        trace.clear();
    });
    EXPECT_EQ(writes, std::vector<std::string>());
}

TEST(TracerTest, HandsItsTextOverInOneWrite) {
    const std::vector<std::string> writes = WritesOf([] {
        TracerX trace(4096);
        trace << "file" << '(' << 12 << "): " << vorn::xstring("reason\n");
        trace.put("\0\xff\n", 3);
    });
    EXPECT_EQ(writes, (std::vector<std::string>{std::string("file(12): reason\n\0\xff\n", 20)}));
}

TEST(TracerTest, LongTextIsOneWriteToo) {
    std::string expected;
    const std::vector<std::string> writes = WritesOf([&expected] {
        TracerX trace(16);
        for (int i = 0; i < 10000; ++i) {
            trace << i << '\n';
            expected += std::to_string(i) + '\n';
        }
    });
    ASSERT_EQ(writes.size(), 1U);
    EXPECT_EQ(writes[0], expected);
}

TEST(TracerTest, HowStandardErrorIsBufferedMakesNoDifference) {
    char buffer[8];
    const std::vector<std::string> writes = WritesOf([&buffer] {
        std::setvbuf(stderr, buffer, _IOFBF, sizeof buffer);
        std::fputs("before", stderr);
        Trace("line 1\nline 2\nline 3\n");
        std::fputs("behind", stderr);
        std::fflush(stderr);
    });
    std::setvbuf(stderr, nullptr, _IONBF, 0);
    EXPECT_EQ(writes, (std::vector<std::string>{"before", "line 1\nline 2\nline 3\n", "behind"}));
}

TEST(TracerTest, EachReportIsAWriteOfItsOwn) {
    const std::vector<std::string> writes = WritesOf([] {
        Trace("first");
        Trace("");
        Trace("second");
    });
    EXPECT_EQ(writes, (std::vector<std::string>{"first", "second"}));
}

TEST(TracerTest, ClosedStandardErrorLosesTheTextQuietly) {
    const int saved = ::dup(STDERR_FILENO);
    ::close(STDERR_FILENO);
    Trace("lost");
    ::dup2(saved, STDERR_FILENO);
    ::close(saved);
    EXPECT_EQ(WritesOf([] { Trace("seen"); }), std::vector<std::string>{"seen"});
}

// A pipe that is full holds the write up, and a signal cuts it short.
TEST(TracerTest, WriteThatASignalCutsShortIsCompleted) {
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    struct sigaction interrupt {};
    struct sigaction saved {};
    interrupt.sa_handler = [](int) {
    };  // without SA_RESTART
    ASSERT_EQ(::sigaction(SIGUSR1, &interrupt, &saved), 0);

    const std::string text(1 << 20, 'x');
    std::string received;
    std::thread reader([&received, &text, readEnd = ends[0], writer = ::pthread_self()] {
        int held = 0;
        int heldBefore = -1;
        for (int i = 0; i < 500 && (held == 0 || held != heldBefore); ++i) {
            heldBefore = held;
            ::usleep(20000);
            ::ioctl(readEnd, FIONREAD, &held);
        }
        ::pthread_kill(writer, SIGUSR1);
        ::usleep(20000);
        ::pthread_kill(writer, SIGUSR1);  // this one finds nothing written
        ::usleep(20000);
        std::string part(4096, '\0');
        while (received.size() < text.size()) {
            const auto n = ::read(readEnd, part.data(), part.size());
            if (n <= 0)
                break;
            received.append(part, 0, static_cast<std::size_t>(n));
        }
    });
    {
        const StandardErrorTo redirection(ends[1]);
        Trace(vorn::SubString(text.data(), text.data() + text.size()));
    }
    reader.join();
    ::close(ends[0]);
    ::sigaction(SIGUSR1, &saved, nullptr);
    EXPECT_TRUE(received == text) << received.size() << " bytes arrived";
}

}  // namespace
