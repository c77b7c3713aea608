#ifndef ORVSMIS_TEST_TEMPROOT_H
#define ORVSMIS_TEST_TEMPROOT_H

// A private SMIS_ROOT for one test: made with mkdtemp, removed afterwards.

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <sys/stat.h>

class TempRoot {
public:
    TempRoot() {
        char pattern[] = "/tmp/smis-runtime-XXXXXX";
        const char* made = mkdtemp(pattern);
        if (made == nullptr) throw std::runtime_error("mkdtemp failed");
        m_path = made;
        setenv("SMIS_ROOT", m_path.c_str(), 1);
        MakeDir("/opt/pegasus/etc");
        MakeDir("/opt/pegasus/bin");
        MakeDir("/opt/pegasus/repository");
        MakeDir("/var/run");
    }
    ~TempRoot() {
        unsetenv("SMIS_ROOT");
        std::system(("rm -rf '" + m_path + "'").c_str());
    }
    TempRoot(const TempRoot&) = delete;
    TempRoot& operator=(const TempRoot&) = delete;

    const std::string& Path() const { return m_path; }
    std::string Under(const std::string& fixed) const { return m_path + fixed; }

    // Makes every folder of fixed (a path like "/opt/pegasus/etc").
    void MakeDir(const std::string& fixed) const {
        std::string so_far = m_path;
        std::string::size_type start = 1;
        while (start <= fixed.size()) {
            std::string::size_type slash = fixed.find('/', start);
            if (slash == std::string::npos) slash = fixed.size();
            so_far += fixed.substr(start - 1, slash - start + 1);
            mkdir(so_far.c_str(), 0755);
            start = slash + 1;
        }
    }

    void Write(const std::string& fixed, const std::string& text) const {
        std::ofstream out(Under(fixed).c_str(), std::ios::binary | std::ios::trunc);
        out << text;
    }

    std::string Read(const std::string& fixed) const {
        std::ifstream in(Under(fixed).c_str(), std::ios::binary);
        if (!in) return "<missing>";
        return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }

    bool Exists(const std::string& fixed) const {
        struct stat st;
        return stat(Under(fixed).c_str(), &st) == 0;
    }

private:
    std::string m_path;
};

#endif
