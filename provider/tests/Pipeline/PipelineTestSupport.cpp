#include "PipelineTestSupport.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>

#include <fstream>
#include <list>
#include <sstream>

#include "ConfigManager.h"
#include "Singleton.h"

namespace pipelinetest {

namespace {

std::string g_root;

void makeDirs(const std::string& path) {
    std::string partial;
    std::istringstream parts(path);
    std::string piece;
    while (std::getline(parts, piece, '/')) {
        if (piece.empty()) continue;
        partial += "/" + piece;
        ::mkdir(partial.c_str(), 0755);
    }
}

// Every test of this program runs in one private root with the folders the
// module writes to, a small repository database (so that size checks pass)
// and a few settings that keep database checks cheap to reach.
class PipelineEnvironment : public ::testing::Environment {
public:
    void SetUp() override {
        char pattern[] = "/tmp/provpipeline-XXXXXX";
        char* dir = ::mkdtemp(pattern);
        ASSERT_NE(dir, nullptr);
        g_root = dir;
        ::setenv("SMIS_ROOT", g_root.c_str(), 1);
        makeDirs(g_root + "/opt/pegasus/etc/conf");
        makeDirs(g_root + "/opt/pegasus/repository");
        makeDirs(g_root + "/var/run");
        WriteRootFile("opt/pegasus/repository/root#orv.db", "small");
        orvsmis::ConfigManager* config = orvsmis::Singleton<orvsmis::ConfigManager>::Instance();
        config->SetConfigValue("general", "dataStoreType", std::list<std::string>{"Memory"});
        config->SetConfigValue("smis", "MaxObjectCount", std::list<std::string>{"5"});
    }

    void TearDown() override {
        if (!g_root.empty() && g_root.rfind("/tmp/provpipeline-", 0) == 0) {
            std::string command = "rm -rf '" + g_root + "'";
            if (::system(command.c_str()) != 0) std::cerr << "could not remove " << g_root << std::endl;
        }
    }
};

::testing::Environment* const g_environment = ::testing::AddGlobalTestEnvironment(new PipelineEnvironment());

}  // namespace

const std::string& TestRoot() { return g_root; }

std::string WriteRootFile(const std::string& relative, const std::string& text) {
    std::string path = g_root + "/" + relative;
    makeDirs(path.substr(0, path.rfind('/')));
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << text;
    return path;
}

std::string ReadFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

}  // namespace pipelinetest
