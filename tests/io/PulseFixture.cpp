#include "PulseFixture.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>
#include <vector>

extern char** environ;

namespace sonmetra::test {
namespace {

constexpr const char* kSinkName = "sonmetra_null";

bool canConnect(const std::string& socketPath) {
    const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0) return false;
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, socketPath.c_str(), sizeof address.sun_path - 1);
    const bool connected = connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
    close(fd);
    return connected;
}

std::string tail(const std::string& path) {
    std::ifstream in(path);
    std::stringstream text;
    text << in.rdbuf();
    std::string all = text.str();
    return all.size() > 600 ? all.substr(all.size() - 600) : all;
}

}  // namespace

bool PulseAudioDaemon::start(std::string& whyNot) {
    char pattern[] = "/tmp/sonmetra-pulse-XXXXXX";
    if (mkdtemp(pattern) == nullptr) {
        whyNot = "cannot create a temporary folder";
        return false;
    }
    m_directory = pattern;
    const std::string runtime = m_directory + "/run";
    std::filesystem::create_directories(runtime);
    chmod(runtime.c_str(), 0700);
    std::filesystem::create_directories(m_directory + "/state");
    std::filesystem::create_directories(m_directory + "/config");
    {
        // ALSA's default device becomes the pulse plugin, whatever the machine has.
        std::ofstream asoundrc(m_directory + "/.asoundrc");
        asoundrc << "pcm.!default { type pulse }\nctl.!default { type pulse }\n";
    }
    const std::string socketPath = m_directory + "/native";
    setenv("HOME", m_directory.c_str(), 1);
    setenv("XDG_RUNTIME_DIR", runtime.c_str(), 1);
    setenv("XDG_CONFIG_HOME", (m_directory + "/config").c_str(), 1);
    setenv("PULSE_RUNTIME_PATH", runtime.c_str(), 1);
    setenv("PULSE_STATE_PATH", (m_directory + "/state").c_str(), 1);
    unsetenv("PULSE_SERVER");

    const std::string logPath = m_directory + "/pulseaudio.log";
    const std::string sink =
        std::string("--load=module-null-sink sink_name=") + kSinkName + " rate=44100 channels=1 norewinds=1";
    const std::string protocol = "--load=module-native-protocol-unix auth-anonymous=1 socket=" + socketPath;
    std::vector<std::string> args = {
        "pulseaudio",        "--daemonize=no", "--exit-idle-time=-1", "-n", "--disable-shm=yes",
        "--use-pid-file=no", "--system=false", "--log-level=notice",  sink, protocol};
    std::vector<char*> argv;
    for (std::string& a : args) argv.push_back(a.data());
    argv.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, logPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
    const int spawned = posix_spawnp(&m_pid, "pulseaudio", &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (spawned != 0) {
        m_pid = -1;
        whyNot = std::string("cannot run pulseaudio: ") + std::strerror(spawned);
        return false;
    }

    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(15);
    while (!canConnect(socketPath)) {
        int status = 0;
        if (waitpid(m_pid, &status, WNOHANG) == m_pid) {
            m_pid = -1;
            whyNot = "pulseaudio exited at start-up: " + tail(logPath);
            return false;
        }
        if (std::chrono::steady_clock::now() > deadline) {
            whyNot = "pulseaudio did not open its socket within 15 s: " + tail(logPath);
            stop();
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    setenv("PULSE_SERVER", ("unix:" + socketPath).c_str(), 1);
    setenv("PULSE_SINK", kSinkName, 1);
    setenv("PULSE_SOURCE", (std::string(kSinkName) + ".monitor").c_str(), 1);
    return true;
}

bool PulseAudioDaemon::startOrExplain() {
    std::string whyNot;
    if (start(whyNot)) return true;
    std::fprintf(stderr, "[  SKIPPED ] PulseAudio cannot start here: %s\n", whyNot.c_str());
    return false;
}

void PulseAudioDaemon::stop() {
    if (m_pid > 0) {
        kill(m_pid, SIGTERM);
        int status = 0;
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
        while (waitpid(m_pid, &status, WNOHANG) == 0) {
            if (std::chrono::steady_clock::now() > deadline) {
                kill(m_pid, SIGKILL);
                waitpid(m_pid, &status, 0);
                break;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
        m_pid = -1;
    }
    if (!m_directory.empty()) {
        std::error_code ignored;
        std::filesystem::remove_all(m_directory, ignored);
        m_directory.clear();
    }
}

}  // namespace sonmetra::test
