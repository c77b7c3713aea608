#include "StorageRecordsTestSupport.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>

#include <fstream>
#include <iostream>
#include <list>

#include "ConfigManager.h"
#include "Singleton.h"

namespace storagetest {

namespace {

std::string g_root;

class StorageRecordsEnvironment : public ::testing::Environment {
public:
    void SetUp() override {
        char pattern[] = "/tmp/storagerecords-XXXXXX";
        char* dir = ::mkdtemp(pattern);
        ASSERT_NE(dir, nullptr);
        g_root = dir;
        ::setenv("SMIS_ROOT", g_root.c_str(), 1);
        for (const char* sub : {"/opt", "/opt/pegasus", "/opt/pegasus/etc", "/var", "/var/run"})
            ::mkdir((g_root + sub).c_str(), 0755);
        orvsmis::Singleton<orvsmis::ConfigManager>::Instance()->SetConfigValue(
            "general", "dataStoreType", std::list<std::string>{"Memory"});
    }

    void TearDown() override {
        if (!g_root.empty() && g_root.rfind("/tmp/storagerecords-", 0) == 0) {
            std::string command = "rm -rf '" + g_root + "'";
            if (::system(command.c_str()) != 0) std::cerr << "could not remove " << g_root << std::endl;
        }
    }
};

::testing::Environment* const g_environment = ::testing::AddGlobalTestEnvironment(new StorageRecordsEnvironment());

}  // namespace

const std::string& TestRoot() { return g_root; }

}  // namespace storagetest
