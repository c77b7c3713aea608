#ifndef ORVSMIS_COMMANDS_TEST_SUPPORT_H
#define ORVSMIS_COMMANDS_TEST_SUPPORT_H

// Helpers of the command layer's tests: a private SMIS_ROOT, files in it,
// settings, and running the simulator's programs.

#include <fcntl.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <functional>
#include <list>
#include <string>
#include <thread>
#include <vector>

#include "ConfigManager.h"

extern char** environ;

namespace cmdtest {

inline void WriteFile(const std::string& path, const std::string& text, mode_t mode = 0644) {
    for (std::string::size_type at = path.find('/', 1); at != std::string::npos; at = path.find('/', at + 1))
        mkdir(path.substr(0, at).c_str(), 0755);
    std::ofstream(path.c_str(), std::ios::binary | std::ios::trunc) << text;
    chmod(path.c_str(), mode);
}

inline std::string ReadFile(const std::string& path) {
    std::ifstream in(path.c_str(), std::ios::binary);
    return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

// A fresh SMIS_ROOT for one test, removed afterwards.
class TempRoot {
public:
    TempRoot() {
        char pattern[] = "/tmp/provcmd-XXXXXX";
        m_path = mkdtemp(pattern) ? pattern : "";
        setenv("SMIS_ROOT", m_path.c_str(), 1);
        WriteFile(m_path + "/opt/pegasus/etc/.keep", "");
    }
    ~TempRoot() {
        unsetenv("SMIS_ROOT");
        if (!m_path.empty() && system(("rm -rf '" + m_path + "'").c_str()) != 0) {
        }
    }
    const std::string& Path() const { return m_path; }
    std::string operator+(const std::string& rest) const { return m_path + rest; }

private:
    std::string m_path;
};

inline void SetConfig(const std::string& section, const std::string& key, const std::list<std::string>& values) {
    orvsmis::Singleton<orvsmis::ConfigManager>::Instance()->SetConfigValue(section, key, values);
}

inline void SetConfig(const std::string& section, const std::string& key, const std::string& value) {
    SetConfig(section, key, std::list<std::string>(1, value));
}

// Waits up to timeoutMs for cond.
inline bool WaitFor(const std::function<bool()>& cond, int timeoutMs) {
    auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    while (!cond()) {
        if (std::chrono::steady_clock::now() >= end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return true;
}

inline std::string SimulatorBin() { return std::string(TEST_BINARY_DIR) + "/arraysim-bin"; }

// Starts a program with the current environment, its output into logPath.
inline pid_t Spawn(const std::vector<std::string>& args, const std::string& logPath) {
    std::vector<char*> argv;
    for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, logPath.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0644);
    posix_spawn_file_actions_adddup2(&actions, 1, 2);
    pid_t pid = -1;
    if (posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), environ) != 0) pid = -1;
    posix_spawn_file_actions_destroy(&actions);
    return pid;
}

// Runs a program to its end: its exit status, or -1.
inline int Run(const std::vector<std::string>& args, const std::string& logPath) {
    pid_t pid = Spawn(args, logPath);
    int status = 0;
    if (pid < 0 || waitpid(pid, &status, 0) != pid) return -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace cmdtest

#endif
