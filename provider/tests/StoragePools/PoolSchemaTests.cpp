// The classes of disks and pools, checked by the real CIM server: every
// instance the models write for an array with disks and pools is loaded
// from MOF, and the server refuses to start when the schema lacks a class
// or property the models use.

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
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include <Pegasus/Common/CIMProperty.h>

#include "DataFlow.h"
#include "DiskDrive.h"
#include "PrimordialPool.h"
#include "StoragePool.h"
#include "PoolTestSupport.h"

using namespace Pegasus;
using namespace orvsmis;
namespace fs = std::filesystem;

namespace {

int freePort() {
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

std::string quoted(const std::string& text) {
    std::string out = "\"";
    for (char c : text) {
        if (c == '"' || c == '\\') out.push_back('\\');
        out.push_back(c);
    }
    return out + "\"";
}

template <class T>
std::string numbers(const CIMValue& value) {
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

std::string mofValue(const CIMValue& value) {
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

std::string mofInstance(const CIMInstance& instance) {
    std::ostringstream out;
    out << "instance of " << instance.getClassName().getString().toUtf8() << "\n{\n";
    for (Uint32 i = 0; i < instance.getPropertyCount(); ++i) {
        CIMConstProperty p = instance.getProperty(i);
        out << "    " << p.getName().getString().toUtf8() << " = " << mofValue(p.getValue()) << ";\n";
    }
    out << "};\n\n";
    return out.str();
}

// A folder laid out as the server's installation, with the schema (the
// disk and pool classes included) and the module's registration.
class ServerRoot {
public:
    ServerRoot() {
        char pattern[] = "/tmp/pool-schema-XXXXXX";
        if (::mkdtemp(pattern) == nullptr) throw std::runtime_error("mkdtemp failed");
        path = pattern;
        schema = path + "/opt/pegasus/schema";
        fs::create_directories(schema);
        fs::create_directories(path + "/opt/pegasus/etc");
        fs::create_directories(path + "/var/run");
        fs::copy(std::string(TEST_SOURCE_DIR) + "/schema", schema, fs::copy_options::recursive);
        fs::copy(std::string(TEST_SOURCE_DIR) + "/provider/registration/ORVSMISProvider.mof",
                 schema + "/ORVSMISProvider.mof");
        includeOnce("orv/DiskDrives.mof");
        includeOnce("orv/StoragePools.mof");
        int port = freePort();
        if (port == 0) throw std::runtime_error("no free port");
        std::ofstream(path + "/opt/pegasus/etc/cimserver.conf")
            << "httpPort=" << port << "\nenableHttpsConnection=false\n";
    }
    ~ServerRoot() {
        stop();
        std::error_code ignored;
        fs::remove_all(path, ignored);
    }

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
        fs::remove(path + "/var/run/cimserver.pid");
    }

    std::string path;
    std::string schema;

private:
    void includeOnce(const std::string& file) {
        const std::string root = schema + "/20-root-orv.mof";
        std::ifstream in(root);
        std::stringstream text;
        text << in.rdbuf();
        if (text.str().find(file) == std::string::npos)
            std::ofstream(root, std::ios::app) << "#pragma include (\"" << file << "\")\n";
    }
};

class PoolSchema : public pooltest::PoolFixture {
protected:
    // The disk, pool and link instances the models leave after an array with
    // a free disk, a pool disk and a plain and a thin pool has been loaded.
    std::string loadedPoolsAsMof() {
        DataEventArgs arrayArgs(context, array, nullptr, WWN);
        if (!repository->has(PrimordialPool::GetPath(WWN))) {
            PrimordialPool primordial;
            primordial.Create(&arrayArgs);
        }
        DiskDrive disks;
        for (PdRawData* pd : {Pd("00-00", 1200000000000ULL), Pd("00-01", 1200000000000ULL, "data", "01")}) {
            DataEventArgs args(context, pd, nullptr, WWN);
            disks.Create(&args);
        }
        StoragePool pools;
        PoolRawData* thin = Pool("0002", "RAID6", 10000000000ULL, 5000000000ULL, "virtual");
        for (PoolRawData* pool : {Pool("0001", "RAID1", 1000000000ULL, 500000000ULL), thin}) {
            DataEventArgs args(context, pool, nullptr, WWN);
            pools.Create(&args);
        }
        PrimordialPool primordial;
        std::vector<RawData*> none;
        HandleDataArgs loaded(&context, RAWDATA_PD, 0, WWN, &none);
        primordial.UpdateInstance(&loaded);

        std::string mof = "#pragma namespace (\"root/orv\")\n\n";
        // Referenced instances first.
        for (const char* cls : {"ORV_Storage_ComputerSystem", "ORV_Storage_DiskDrive", "ORV_Storage_StorageExtent",
                                "ORV_Storage_StoragePool", "ORV_Storage_SystemDevice", "ORV_Storage_MediaPresent",
                                "ORV_Storage_HostedStoragePool", "ORV_Storage_AllocatedFromStoragePool",
                                "ORV_Storage_AssociatedComponentExtent", "ORV_Storage_AssociatedRemainingExtent",
                                "ORV_Storage_ConcreteComponent"}) {
            std::vector<CIMInstance> found = repository->of(cls);
            EXPECT_FALSE(found.empty()) << cls;
            for (const CIMInstance& instance : found) mof += mofInstance(instance);
        }
        return mof;
    }
};

TEST_F(PoolSchema, TheServerTakesEveryDiskAndPoolInstance) {
    ServerRoot root;
    std::ofstream(root.schema + "/90-pool-instances.mof") << loadedPoolsAsMof();
    std::string output;
    EXPECT_TRUE(root.start(output)) << output;
}

TEST_F(PoolSchema, TheServerRefusesAPropertyTheSchemaLacks) {
    ServerRoot root;
    std::string mof = loadedPoolsAsMof();
    const std::string anchor = "    PoolID = \"All PD\";\n";
    size_t at = mof.find(anchor);
    ASSERT_NE(std::string::npos, at);
    mof.insert(at + anchor.size(), "    PoolColour = \"blue\";\n");
    std::ofstream(root.schema + "/90-pool-instances.mof") << mof;
    std::string output;
    EXPECT_FALSE(root.start(output));
    EXPECT_NE(std::string::npos, output.find("PoolColour")) << output;
}

}  // namespace
