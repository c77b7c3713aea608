#include <Pegasus/Server/CIMServerConfig.h>

#include <gtest/gtest.h>

#include <cstdlib>

using namespace Pegasus;

namespace {

class CIMServerConfigTest : public ::testing::Test {
protected:
    void SetUp() override { ::setenv("SMIS_ROOT", "/tmp/some-root/", 1); }
    void TearDown() override { ::unsetenv("SMIS_ROOT"); }
};

TEST_F(CIMServerConfigTest, DefaultsLieUnderTheRoot) {
    const CIMServerConfig config;
    EXPECT_EQ(config.httpPort, 5988);
    EXPECT_EQ(config.httpsPort, 5989);
    EXPECT_TRUE(config.enableAuthentication);
    EXPECT_EQ(config.repositoryDir, "/tmp/some-root/opt/pegasus/repository");
    EXPECT_EQ(config.pidFile, "/tmp/some-root/var/run/cimserver.pid");
    EXPECT_EQ(CIMServerConfig::defaultFile(), "/tmp/some-root/opt/pegasus/etc/cimserver.conf");
    ::unsetenv("SMIS_ROOT");
    EXPECT_EQ(CIMServerConfig().pidFile, "/var/run/cimserver.pid");
    EXPECT_EQ(CIMServerConfig::underRoot("relative/file"), "relative/file");
}

TEST_F(CIMServerConfigTest, ReadsEverySettingKind) {
    const CIMServerConfig config = CIMServerConfig::parse(
        "# a comment\n"
        "\n"
        "httpPort = 15988\n"
        "enableHttpsConnection=FALSE\n"
        "listenAddress=loopback\n"
        "traceLevel=4\n"
        "traceComponents=Repository, ProviderModule\n"
        "repositoryDir=/srv/repo\n"
        "hostname=array-mgr.example\n",
        "test.conf");
    EXPECT_EQ(config.httpPort, 15988);
    EXPECT_FALSE(config.enableHttpsConnection);
    EXPECT_TRUE(config.loopbackOnly);
    EXPECT_EQ(config.traceLevel, 4u);
    EXPECT_EQ(config.traceComponents, "Repository, ProviderModule");
    EXPECT_EQ(config.repositoryDir, "/tmp/some-root/srv/repo");
    EXPECT_EQ(config.hostname, "array-mgr.example");
}

TEST_F(CIMServerConfigTest, BrokenLinesNameFileAndLine) {
    const struct {
        const char* text;
        const char* expected;
    } cases[] = {
        {"httpPort=5988\nnoSuchSetting=1\n", "test.conf:2: unknown setting \"noSuchSetting\""},
        {"httpPort=70000\n", "test.conf:1: httpPort must be a number from 1 to 65535"},
        {"httpPort=12ab\n", "test.conf:1: httpPort"},
        {"enableAuthentication=yes\n", "test.conf:1: enableAuthentication must be true or false"},
        {"listenAddress=10.0.0.1\n", "test.conf:1: listenAddress must be all or loopback"},
        {"traceLevel=6\n", "test.conf:1: traceLevel"},
        {"traceComponents=Repository,Nonsense\n", "test.conf:1: traceComponents names an unknown"},
        {"just words\n", "test.conf:1: expected name=value"},
        {"httpPort=1\n\nhttpPort=2\n", "test.conf:3: httpPort is set twice (first on line 1)"},
        {"hostname=bad host;rm\n", "test.conf:1: hostname is not a host name"},
        {"repositoryDir=\n", "test.conf:1: repositoryDir must name"},
    };
    for (const auto& c : cases) {
        try {
            CIMServerConfig::parse(c.text, "test.conf");
            ADD_FAILURE() << "accepted: " << c.text;
        } catch (const ConfigError& e) {
            EXPECT_NE(std::string(e.what()).find(c.expected), std::string::npos) << e.what();
        }
    }
}

TEST_F(CIMServerConfigTest, MissingFileIsAnError) {
    EXPECT_THROW(CIMServerConfig::load("/tmp/some-root/none/cimserver.conf"), ConfigError);
}

} // namespace
