#include "client/LocalDispatcher.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>
#include <vector>

#include "client/Connection.h"

namespace tnavclient {

namespace {

constexpr std::size_t kStderrTail = 2000;

// A name without a slash is looked for in PATH, as a shell would; otherwise it is taken as it stands.
std::string resolve(const std::string& executable) {
    if (executable.find('/') != std::string::npos) return executable;
    const char* path = std::getenv("PATH");
    std::string dirs = path != nullptr ? path : "/usr/local/bin:/usr/bin:/bin";
    std::size_t start = 0;
    while (start <= dirs.size()) {
        std::size_t end = dirs.find(':', start);
        if (end == std::string::npos) end = dirs.size();
        const std::string dir = end > start ? dirs.substr(start, end - start) : ".";
        const std::string candidate = dir + "/" + executable;
        if (::access(candidate.c_str(), X_OK) == 0) return candidate;
        start = end + 1;
    }
    return executable;
}

}  // namespace

std::string portProblem(int port) {
    const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0) return std::string("no socket can be opened: ") + std::strerror(errno);
    const int one = 1;
    // SO_REUSEADDR ignores connections in TIME_WAIT but not a socket that listens on the port.
    ::setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &one, sizeof one);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_ANY);
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    std::string problem;
    if (::bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
        problem = errno == EADDRINUSE
                      ? "port " + std::to_string(port) + " is already in use by another process"
                      : "port " + std::to_string(port) + " cannot be bound: " + std::strerror(errno);
    } else if (::listen(fd, 1) != 0) {
        problem = errno == EADDRINUSE
                      ? "port " + std::to_string(port) + " is already in use by another process"
                      : "port " + std::to_string(port) + " cannot be listened on: " + std::strerror(errno);
    }
    ::close(fd);
    return problem;
}

LocalDispatcher::~LocalDispatcher() {
    stop(0);
    if (stderrFd_ >= 0) ::close(stderrFd_);
}

tNavigator_API_RMA_error_t LocalDispatcher::start(const std::string& executable, const char* debugFile,
                                                  int port) {
    const char* call = "create_local_dispatcher__force_ports";
    if (executable.empty()) return invalidArgument(call, "no dispatcher executable was given");
    const std::string program = resolve(executable);
    if (port <= 0 || port > 65535)
        return invalidArgument(call, "port " + std::to_string(port) + " is not a TCP port (1..65535)");
    struct stat info {};
    if (::stat(program.c_str(), &info) != 0)
        return makeError(kDispatcherStart, std::string(call) + ": dispatcher executable " + executable +
                                               " not found: " + std::strerror(errno));
    if (!S_ISREG(info.st_mode) || ::access(program.c_str(), X_OK) != 0)
        return makeError(kDispatcherStart,
                         std::string(call) + ": " + executable + " is not an executable file");
    if (const std::string problem = portProblem(port); !problem.empty())
        return makeError(kDispatcherStart, std::string(call) + ": cannot start a dispatcher on port " +
                                               std::to_string(port) + ": " + problem);

    // The child's error stream goes to an unlinked temporary file, read back when it fails.
    char stderrPath[] = "/tmp/tnavapi-dispatcher-XXXXXX";
    const int stderrFd = ::mkostemp(stderrPath, O_CLOEXEC);
    if (stderrFd < 0)
        return makeError(
            kDispatcherStart,
            std::string(call) + ": no temporary file for the dispatcher's output: " + std::strerror(errno));
    ::unlink(stderrPath);

    // Everything the child needs is prepared before fork: only async-signal-safe calls run after it.
    std::vector<std::string> words = {program, "--dispatcher", "--port", std::to_string(port)};
    if (debugFile != nullptr && debugFile[0] != '\0') {
        words.emplace_back("--debug");
        words.emplace_back(debugFile);
    }
    std::vector<char*> argv;
    for (std::string& word : words) argv.push_back(word.data());
    argv.push_back(nullptr);
    const pid_t parent = ::getpid();

    const pid_t pid = ::fork();
    if (pid < 0) {
        ::close(stderrFd);
        return makeError(kDispatcherStart, std::string(call) + ": fork failed: " + std::strerror(errno));
    }
    if (pid == 0) {
        // The dispatcher watches for this process's end itself; a parent-death signal would fire when the
        // calling thread ends, and the host may start a run from a thread that does not last.
        if (::getppid() != parent) ::_exit(127);
        const int devNull = ::open("/dev/null", O_RDWR);
        if (devNull >= 0) {
            ::dup2(devNull, STDIN_FILENO);
            ::dup2(devNull, STDOUT_FILENO);
        }
        ::dup2(stderrFd, STDERR_FILENO);
        // No descriptor of this process (sockets, files) stays open in the dispatcher.
        ::close_range(3, ~0U, 0);
        ::execv(argv[0], argv.data());
        static const char kMessage[] = "exec of the dispatcher executable failed\n";
        [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, kMessage, sizeof kMessage - 1);
        ::_exit(127);
    }
    pid_ = pid;
    exited_ = false;
    if (stderrFd_ >= 0) ::close(stderrFd_);
    stderrFd_ = stderrFd;
    return {};
}

bool LocalDispatcher::running() {
    if (pid_ <= 0 || exited_) return false;
    int status = 0;
    const pid_t result = ::waitpid(pid_, &status, WNOHANG);
    if (result == pid_) {
        exited_ = true;
        status_ = status;
        return false;
    }
    // A program that ignores SIGCHLD cannot wait for its children: the process is then looked for instead.
    if (result < 0 && errno == ECHILD && ::kill(pid_, 0) != 0) {
        exited_ = true;
        status_ = 0;
        return false;
    }
    return true;
}

bool LocalDispatcher::stopped() const {
    if (pid_ <= 0 || exited_) return false;
    char path[40];
    std::snprintf(path, sizeof path, "/proc/%d/stat", static_cast<int>(pid_));
    char line[512];
    const int fd = ::open(path, O_RDONLY | O_CLOEXEC);
    if (fd < 0) return false;
    const ssize_t got = ::read(fd, line, sizeof line - 1);
    ::close(fd);
    if (got <= 0) return false;
    line[got] = '\0';
    // The state follows the command name, which is in parentheses and may itself hold them.
    const char* close = std::strrchr(line, ')');
    return close != nullptr && close[1] == ' ' && (close[2] == 'T' || close[2] == 't');
}

std::string LocalDispatcher::exitReport() {
    std::string report;
    if (exited_) {
        if (WIFEXITED(status_))
            report = "the dispatcher exited with status " + std::to_string(WEXITSTATUS(status_));
        else if (WIFSIGNALED(status_))
            report = "the dispatcher was killed by signal " + std::to_string(WTERMSIG(status_));
        else
            report = "the dispatcher ended";
    } else {
        report = "the dispatcher is still running";
    }
    if (stderrFd_ >= 0) {
        const off_t size = ::lseek(stderrFd_, 0, SEEK_END);
        if (size > 0) {
            const off_t from =
                size > static_cast<off_t>(kStderrTail) ? size - static_cast<off_t>(kStderrTail) : 0;
            std::string tail(static_cast<std::size_t>(size - from), '\0');
            const ssize_t got = ::pread(stderrFd_, tail.data(), tail.size(), from);
            if (got > 0) {
                tail.resize(static_cast<std::size_t>(got));
                while (!tail.empty() && (tail.back() == '\n' || tail.back() == '\r')) tail.pop_back();
                if (!tail.empty()) report += "; its error output ends with: " + tail;
            }
        }
    }
    return report;
}

void LocalDispatcher::stop(int graceMs) {
    if (pid_ <= 0) return;
    using Clock = std::chrono::steady_clock;
    auto waitFor = [this](int ms) {
        const auto end = Clock::now() + std::chrono::milliseconds(ms);
        while (running()) {
            if (Clock::now() >= end) return false;
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return true;
    };
    if (stopped() || !waitFor(graceMs)) {
        ::kill(pid_, SIGTERM);
        ::kill(pid_, SIGCONT);  // a stopped process acts on SIGTERM only once it runs again
        if (!waitFor(1000)) {
            ::kill(pid_, SIGKILL);
            waitFor(2000);
        }
    }
    pid_ = -1;
}

}  // namespace tnavclient
