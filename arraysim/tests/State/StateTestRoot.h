#pragma once
// A temporary SMIS_ROOT for one test, removed afterwards.

#include <cstdlib>
#include <string>

#include <unistd.h>

namespace arraysim_test {

class TempRoot {
public:
    TempRoot() {
        char pattern[] = "/tmp/arraysim-state-XXXXXX";
        const char* made = ::mkdtemp(pattern);
        m_path = made != nullptr ? made : "";
        ::setenv("SMIS_ROOT", m_path.c_str(), 1);
    }
    ~TempRoot() {
        ::unsetenv("SMIS_ROOT");
        if (!m_path.empty()) {
            const std::string line = "rm -rf '" + m_path + "'";
            const int ignored = std::system(line.c_str());
            (void)ignored;
        }
    }
    const std::string& Path() const { return m_path; }
    std::string StateDir() const { return m_path + "/var/lib/arraysim"; }

private:
    std::string m_path;
};

}  // namespace arraysim_test
