#ifndef CIMSERVER_TESTS_SERVER_SERVERTESTROOT_H
#define CIMSERVER_TESTS_SERVER_SERVERTESTROOT_H

// A temporary SMIS_ROOT with the server's schema, the test classes and the
// test module's registration; removed again at the end.

#include <Pegasus/Server/CIMServerConfig.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

class ServerTestRoot {
public:
    ServerTestRoot() {
        char pattern[] = "/tmp/cimserver-test-XXXXXX";
        const char* made = ::mkdtemp(pattern);
        if (made == nullptr) throw std::runtime_error("mkdtemp failed");
        _path = made;
        namespace fs = std::filesystem;
        const fs::path schema = _path + "/opt/pegasus/schema";
        fs::create_directories(schema);
        fs::copy(std::string(TEST_SOURCE_DIR) + "/schema", schema, fs::copy_options::recursive);
        for (const auto& entry : fs::directory_iterator(std::string(TEST_DATA_DIR) + "/server"))
            if (entry.path().extension() == ".mof") fs::copy(entry.path(), schema / entry.path().filename());
        fs::create_directories(_path + "/opt/pegasus/etc");
        ::setenv("SMIS_ROOT", _path.c_str(), 1);
        ::setenv("TEST_PROVIDER_LOG", log().c_str(), 1);
    }
    ~ServerTestRoot() {
        ::unsetenv("SMIS_ROOT");
        ::unsetenv("TEST_PROVIDER_LOG");
        std::error_code ignored;
        std::filesystem::remove_all(_path, ignored);
    }
    ServerTestRoot(const ServerTestRoot&) = delete;
    ServerTestRoot& operator=(const ServerTestRoot&) = delete;

    const std::string& path() const { return _path; }
    std::string log() const { return _path + "/provider.log"; }

    // Defaults under this root, the test modules as provider folder.
    Pegasus::CIMServerConfig config() const {
        Pegasus::CIMServerConfig config;
        config.providerDir = std::string(TEST_BINARY_DIR) + "/testmodules";
        return config;
    }

    std::string read(const std::string& file) const {
        std::ifstream in(file);
        return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }

    void write(const std::string& file, const std::string& text) const { std::ofstream(file) << text; }

private:
    std::string _path;
};

#endif
