// What a tip server that hangs costs: time from the start of the process to its shown frame, and
// on to the end of the process when the frame is closed then. The other side has no server.

#include "support/ChildProcess.h"
#include "support/Report.h"
#include "support/ShownWindow.h"
#include "support/WorkFolder.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
namespace fs = std::filesystem;

constexpr int repetitions = 31;
constexpr auto longestWait = std::chrono::seconds(60);
constexpr const char* title = "Kelvane";
/// Nobody listens at the first port of this machine.
constexpr unsigned short noServer = 1;
const orbisk::bench::Wanted hardlyMore{orbisk::bench::Wanted::Bound::AtMost, 1.05};
const orbisk::bench::Subject start{"start to frame, tips hang", "ms", orbisk::bench::Choice::Lowest,
                                   hardlyMore};
const orbisk::bench::Subject wholeRun{"start to end, tips hang", "ms",
                                      orbisk::bench::Choice::Lowest, hardlyMore};

/// Takes connections, as the system does for whoever listens, and never says a word.
class HangingServer {
public:
    HangingServer() : m_socket(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        constexpr int queueLength = 256;
        m_address.sin_family = AF_INET;
        m_address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof(m_address);
        auto* address = reinterpret_cast<sockaddr*>(&m_address);
        if (m_socket < 0 || bind(m_socket, address, length) != 0 ||
            listen(m_socket, queueLength) != 0 || getsockname(m_socket, address, &length) != 0)
            throw std::runtime_error("cannot listen");
    }

    ~HangingServer() { close(m_socket); }

    HangingServer(const HangingServer&) = delete;
    HangingServer& operator=(const HangingServer&) = delete;

    unsigned short port() const { return ntohs(m_address.sin_port); }

private:
    int m_socket;
    sockaddr_in m_address{};
};

struct Run {
    double toFrame = 0; ///< milliseconds
    double toEnd = 0;
};

double millisecondsSince(Clock::time_point begin) {
    return std::chrono::duration<double, std::milli>(Clock::now() - begin).count();
}

Run runOnce(const orbisk::bench::ShownWindow& window, unsigned short port, const fs::path& folder) {
    const fs::path program = fs::path(ORBISK_BENCH_HELPERS_DIR) / "ProgramWithTips";
    const auto begin = Clock::now();
    orbisk::bench::ChildProcess child({program.string(), std::to_string(port)}, folder);
    window.waitUntilShown(title, longestWait);
    Run run;
    run.toFrame = millisecondsSince(begin);
    window.close(title);
    child.output();
    run.toEnd = millisecondsSince(begin);
    return run;
}

void measure(orbisk::bench::Report& report) {
    if (!report.wants(start.name) && !report.wants(wholeRun.name))
        return;
    const orbisk::bench::WorkFolder folder;
    const orbisk::bench::ShownWindow window;
    const HangingServer server;
    orbisk::bench::Samples ends;
    const auto side = [&](unsigned short port, std::vector<double>& toEnd) {
        const Run run = runOnce(window, port, folder.path());
        toEnd.push_back(run.toEnd);
        return run.toFrame;
    };
    const auto ours = [&] { return side(server.port(), ends.ours); };
    const auto theirs = [&] { return side(noServer, ends.theirs); };
    // Brings the program and its libraries into the machine's memory.
    orbisk::bench::interleave(1, ours, theirs);
    ends = {};
    const orbisk::bench::Samples frames = orbisk::bench::interleave(repetitions, ours, theirs);
    if (report.wants(start.name))
        report.add(start, frames);
    if (report.wants(wholeRun.name))
        report.add(wholeRun, ends);
}

} // namespace

int main(int argc, char** argv) {
    return orbisk::bench::Report::run(argc, argv, measure);
}
