#ifndef ORVSMIS_TEST_SCHEMASERVERCHECK_H
#define ORVSMIS_TEST_SCHEMASERVERCHECK_H

// Checks what the models write against the real server: the instances are
// written as MOF next to the installed schema and the module's
// registration, and the server must start on them (it refuses a property
// its class lacks).

#include <arpa/inet.h>
#include <netinet/in.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMValue.h>

namespace schemacheck {

using namespace Pegasus;

inline int freePort() {
    int fd = ::socket(AF_INET, SOCK_STREAM, 0);
    if (fd < 0) return 0;
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    int port = 0;
    if (::bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0 &&
        ::getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length) == 0)
        port = ntohs(address.sin_port);
    ::close(fd);
    return port;
}

inline std::string quoted(const std::string& text) {
    std::string out = "\"";
    for (char c : text) {
        if (c == '"' || c == '\\') out.push_back('\\');
        out.push_back(c);
    }
    return out + "\"";
}

template <class T>
inline std::string numbers(const CIMValue& value) {
    std::ostringstream out;
    if (value.isArray()) {
        Array<T> items;
        value.get(items);
        out << "{ ";
        for (Uint32 i = 0; i < items.size(); ++i) out << (i ? ", " : "") << static_cast<unsigned long long>(items[i]);
        out << " }";
    } else {
        T number = 0;
        value.get(number);
        out << static_cast<unsigned long long>(number);
    }
    return out.str();
}

inline std::string mofValue(const CIMValue& value) {
    switch (value.getType()) {
    case CIMTYPE_STRING: {
        if (!value.isArray()) {
            String text;
            value.get(text);
            return quoted(text.toUtf8());
        }
        Array<String> items;
        value.get(items);
        std::string out = "{ ";
        for (Uint32 i = 0; i < items.size(); ++i) out += (i ? ", " : "") + quoted(items[i].toUtf8());
        return out + " }";
    }
    case CIMTYPE_BOOLEAN: {
        Boolean flag = false;
        value.get(flag);
        return flag ? "true" : "false";
    }
    case CIMTYPE_UINT8: {
        // Widened so that the numbers print as numbers, not characters.
        if (!value.isArray()) {
            Uint8 number = 0;
            value.get(number);
            return std::to_string(number);
        }
        Array<Uint8> items;
        value.get(items);
        std::string out = "{ ";
        for (Uint32 i = 0; i < items.size(); ++i) out += (i ? ", " : "") + std::to_string(items[i]);
        return out + " }";
    }
    case CIMTYPE_SINT16: return numbers<Sint16>(value);
    case CIMTYPE_SINT32: return numbers<Sint32>(value);
    case CIMTYPE_SINT64: return numbers<Sint64>(value);
    case CIMTYPE_UINT16: return numbers<Uint16>(value);
    case CIMTYPE_UINT32: return numbers<Uint32>(value);
    case CIMTYPE_UINT64: return numbers<Uint64>(value);
    case CIMTYPE_REFERENCE: {
        CIMObjectPath path;
        value.get(path);
        return quoted(path.toString().toUtf8());
    }
    default:
        ADD_FAILURE() << "a value of type " << int(value.getType()) << " has no MOF form here";
        return "0";
    }
}

inline std::string mofInstance(const CIMInstance& instance) {
    std::ostringstream out;
    out << "instance of " << instance.getClassName().getString().toUtf8() << "\n{\n";
    for (Uint32 i = 0; i < instance.getPropertyCount(); ++i) {
        CIMConstProperty p = instance.getProperty(i);
        out << "    " << p.getName().getString().toUtf8() << " = " << mofValue(p.getValue()) << ";\n";
    }
    out << "};\n\n";
    return out.str();
}

// A folder laid out as the server's installation, with the schema and the
// module's registration.
class ServerRoot {
public:
    ServerRoot() {
        namespace fs = std::filesystem;
        char pattern[] = "/tmp/model-schema-XXXXXX";
        if (::mkdtemp(pattern) == nullptr) throw std::runtime_error("mkdtemp failed");
        path = pattern;
        schema = path + "/opt/pegasus/schema";
        fs::create_directories(schema);
        fs::create_directories(path + "/opt/pegasus/etc");
        fs::create_directories(path + "/var/run");
        fs::copy(std::string(TEST_SOURCE_DIR) + "/schema", schema, fs::copy_options::recursive);
        fs::copy(std::string(TEST_SOURCE_DIR) + "/provider/registration/ORVSMISProvider.mof",
                 schema + "/ORVSMISProvider.mof");
        int port = freePort();
        if (port == 0) throw std::runtime_error("no free port");
        std::ofstream(path + "/opt/pegasus/etc/cimserver.conf")
            << "httpPort=" << port << "\nenableHttpsConnection=false\n";
    }
    ~ServerRoot() {
        stop();
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    ServerRoot(const ServerRoot&) = delete;
    ServerRoot& operator=(const ServerRoot&) = delete;

    // Runs the server to the point where it serves (or fails); true when it
    // serves. Its words go to output.
    bool start(std::string& output) {
        std::string command = "SMIS_ROOT=" + path + " " + TEST_BINARY_DIR + "/bin/cimserver 2>&1";
        FILE* pipe = ::popen(command.c_str(), "r");
        if (pipe == nullptr) return false;
        char buffer[512];
        while (::fgets(buffer, sizeof buffer, pipe) != nullptr) output += buffer;
        return ::pclose(pipe) == 0;
    }

    void stop() {
        std::ifstream in(path + "/var/run/cimserver.pid");
        pid_t pid = 0;
        if (!(in >> pid) || pid <= 0) return;
        ::kill(pid, SIGTERM);
        for (int i = 0; i < 300 && ::kill(pid, 0) == 0; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
        std::filesystem::remove(path + "/var/run/cimserver.pid");
    }

    std::string path;
    std::string schema;
};

}  // namespace schemacheck

#endif
