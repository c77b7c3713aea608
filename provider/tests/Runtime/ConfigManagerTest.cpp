// Reading of the module's configuration file.

#include <gtest/gtest.h>

#include <list>
#include <string>

#include "ConfigManager.h"
#include "Singleton.h"
#include "TempRoot.h"

using orvsmis::ConfigManager;
using orvsmis::Singleton;

namespace {

typedef std::list<std::string> Values;

Values values(std::initializer_list<const char*> items) {
    Values out;
    for (const char* item : items) out.push_back(item);
    return out;
}

// Initialises the process's ConfigManager from text written as the
// configuration file of a fresh root.
class ConfigFile : public ::testing::Test {
protected:
    bool Load(const std::string& text) {
        m_root.Write(ConfigManager::CONFIG_FILE, text);
        return Config()->Initialize();
    }
    ConfigManager* Config() { return Singleton<ConfigManager>::Instance(); }
    Values Get(const std::string& section, const std::string& key) {
        Values out;
        EXPECT_TRUE(Config()->GetConfigValue(section, key, out)) << section << "/" << key;
        return out;
    }
    bool Has(const std::string& section, const std::string& key) {
        Values out;
        return Config()->GetConfigValue(section, key, out);
    }

    TempRoot m_root;
};

TEST_F(ConfigFile, DefaultsAreSeededAndFileOverridesThem) {
    ASSERT_TRUE(Load("[general]\nprefix = XX_\n[smis]\nnamespace = root/orv\n"));
    EXPECT_TRUE(Config()->IsInitialized());
    EXPECT_EQ("XX_", Config()->GetPrefix());
    EXPECT_EQ("root/orv", Config()->GetNamespace());
    EXPECT_EQ("ORV", Config()->GetVendor());
    EXPECT_EQ("ORV", Config()->GetManufacture());
    EXPECT_EQ("ORV", Config()->GetBrand());
    EXPECT_EQ("Storage", Config()->GetDescription());
    EXPECT_EQ(32, Config()->GetDiskArrayMaxCount());
    // "Memory" reads as 0 by atoi: the in-memory store.
    EXPECT_EQ(0, Config()->GetDataStoreType());
    // No module name configured: empty, not a default.
    EXPECT_EQ("", Config()->GetProviderModuleName());
    EXPECT_EQ("", Config()->GetLibName());
}

TEST_F(ConfigFile, InitializeStartsAfreshEachTime) {
    ASSERT_TRUE(Load("[Test]\nkey = 1\n[general]\nprefix = A_\n"));
    ASSERT_TRUE(Load("[Other]\nx = 2\n"));
    EXPECT_FALSE(Has("Test", "key"));
    EXPECT_EQ("ORV_Storage_", Config()->GetPrefix());
}

TEST_F(ConfigFile, SectionAndKeySyntax) {
    ASSERT_TRUE(Load("orphan = ignored\n"
                     "   [ smis ]   \n"
                     "  providerModuleName =  Mod  \n"
                     "list = 1, 2 ,3\n"
                     "empty =\n"
                     "tabbed =\tx\n"
                     "spaced = a b\n"
                     "eq = a=b\n"
                     "# a comment\n"
                     "\n"
                     "        \n"
                     "[smis]\n"
                     "again = yes\n"));
    EXPECT_EQ("Mod", Config()->GetProviderModuleName());
    EXPECT_EQ(values({"1", "2", "3"}), Get("smis", "list"));
    EXPECT_EQ(values({""}), Get("smis", "empty"));
    // Only blanks are trimmed: the tab stays.
    EXPECT_EQ(values({"\tx"}), Get("smis", "tabbed"));
    EXPECT_EQ(values({"a b"}), Get("smis", "spaced"));
    EXPECT_EQ(values({"a=b"}), Get("smis", "eq"));
    // A section opened a second time goes on collecting keys.
    EXPECT_EQ(values({"yes"}), Get("smis", "again"));
    // A key in front of the first section is dropped everywhere.
    EXPECT_FALSE(Has("general", "orphan"));
    EXPECT_FALSE(Has("", "orphan"));
    // Names are case-sensitive.
    EXPECT_FALSE(Has("SMIS", "list"));
}

TEST_F(ConfigFile, CommentCutTakesTheCharacterInFrontOfTheSign) {
    ASSERT_TRUE(Load("[s]\n"
                     "a = b #note\n"
                     "c = d#note\n"
                     "e = fg#note\n"
                     "h = 1, 22 #note\n"));
    EXPECT_EQ(values({"b"}), Get("s", "a"));
    EXPECT_EQ(values({""}), Get("s", "c"));
    EXPECT_EQ(values({"f"}), Get("s", "e"));
    EXPECT_EQ(values({"1", "22"}), Get("s", "h"));
}

TEST_F(ConfigFile, BadLinesRefuseTheWholeFile) {
    const char* const bad[] = {
        "[s]\nflag\n",            // no "="
        "[]\n",                   // empty section name
        "[   ]\n",                // blank section name
        "[s]\n = value\n",        // empty key
        "[s]\nk = a,,b\n",        // empty item
        "[s]\nk = a,b,\n",        // trailing comma
        "[s]\nk = ,a\n",          // leading comma
        "[s]\nk = 1\nk = 2\n",    // the same key twice outside general
        "[s]\nk = 1\n[t]\nx=1\n[s]\nk = 2\n",  // also across reopened sections
        "flag\n[s]\n",            // a bad line counts before any section too
        "[s]\nk#v\n",             // the cut leaves no "=" behind
    };
    for (const char* text : bad) {
        EXPECT_FALSE(Load(text)) << text;
        EXPECT_FALSE(Config()->IsInitialized()) << text;
    }
}

TEST_F(ConfigFile, LinesBeforeABadLineStayTaken) {
    EXPECT_FALSE(Load("[s]\nfirst = 1\nbroken\nlast = 2\n"));
    EXPECT_EQ(values({"1"}), Get("s", "first"));
    EXPECT_FALSE(Has("s", "last"));
}

TEST_F(ConfigFile, GeneralKeepsTheLastDefinition) {
    ASSERT_TRUE(Load("[general]\nprefix = A_\nprefix = B_\nvendor = V1\n[general]\nvendor = V2\n"));
    EXPECT_EQ("B_", Config()->GetPrefix());
    EXPECT_EQ("V2", Config()->GetVendor());
}

TEST_F(ConfigFile, MissingOrUnreadableFileFails) {
    EXPECT_FALSE(Config()->LoadFile(m_root.Under("/opt/pegasus/etc/none.conf")));
    m_root.MakeDir("/opt/pegasus/etc/smis_provider.conf.d");
    EXPECT_FALSE(Config()->LoadFile(m_root.Under("/opt/pegasus/etc/smis_provider.conf.d")));
    // No file at all under the root: the module does not load.
    EXPECT_FALSE(Config()->Initialize());
    EXPECT_FALSE(Config()->IsInitialized());
}

TEST_F(ConfigFile, TypedReads) {
    ASSERT_TRUE(Load("[Test]\n"
                     "on = true\n"
                     "upper = TRUE\n"
                     "one = 1\n"
                     "empty =\n"
                     "num = 42abc\n"
                     "word = text, more\n"));
    EXPECT_TRUE(ConfigManager::GetConfigBoolValue("Test", "on", false));
    EXPECT_FALSE(ConfigManager::GetConfigBoolValue("Test", "upper", true));
    EXPECT_FALSE(ConfigManager::GetConfigBoolValue("Test", "one", true));
    EXPECT_TRUE(ConfigManager::GetConfigBoolValue("Test", "absent", true));
    EXPECT_FALSE(ConfigManager::GetConfigBoolValue("Nothing", "on", false));
    // A key with an empty value does not fall back to the default.
    EXPECT_FALSE(ConfigManager::GetConfigBoolValue("Test", "empty", true));
    EXPECT_EQ(0, ConfigManager::GetConfigIntValue("Test", "empty", 7));
    EXPECT_EQ("", ConfigManager::GetConfigStringValue("Test", "empty", "dflt"));
    EXPECT_EQ(42, ConfigManager::GetConfigIntValue("Test", "num", 0));
    EXPECT_EQ(7, ConfigManager::GetConfigIntValue("Test", "absent", 7));
    EXPECT_EQ("text", ConfigManager::GetConfigStringValue("Test", "word", ""));
    EXPECT_EQ("dflt", ConfigManager::GetConfigStringValue("Test", "absent", "dflt"));
}

TEST_F(ConfigFile, GetConfigValueAppendsAndSetConfigValueReplaces) {
    ASSERT_TRUE(Load("[s]\nk = a, b\n"));
    Values out = values({"x"});
    EXPECT_TRUE(Config()->GetConfigValue("s", "k", out));
    EXPECT_EQ(values({"x", "a", "b"}), out);
    EXPECT_FALSE(Config()->GetConfigValue("s", "absent", out));

    Config()->SetConfigValue("general", "brand", values({"NEW"}));
    Config()->SetConfigValue("fresh", "key", values({"1", "2"}));
    EXPECT_EQ("NEW", Config()->GetBrand());
    EXPECT_EQ(values({"1", "2"}), Get("fresh", "key"));
    // A key set with no values is still found.
    Config()->SetConfigValue("fresh", "none", Values());
    Values none;
    EXPECT_TRUE(Config()->GetConfigValue("fresh", "none", none));
    EXPECT_TRUE(none.empty());
    EXPECT_EQ("", Config()->GetSetting("none"));
}

TEST_F(ConfigFile, SettingIsCaseSensitiveAgainstTheDefaults) {
    ASSERT_TRUE(Load("[smis]\nx = 1\n"));
    EXPECT_EQ("ORV", Config()->GetSetting("vendor"));
    EXPECT_EQ("", Config()->GetSetting("Vendor"));
    EXPECT_EQ("", Config()->GetSetting("Brand"));
    ASSERT_TRUE(Load("[general]\nVendor = Big Maker\n"));
    EXPECT_EQ("Big Maker", Config()->GetSetting("Vendor"));
    EXPECT_EQ("ORV", Config()->GetVendor());
}

TEST_F(ConfigFile, ReplacementPairsMayHoldTheComma) {
    // The parser splits "a_,-" at the comma; the pairs come back whole.
    ASSERT_TRUE(Load("[smis]\nreplacementCharListOfLDName = a_,-b.\n"));
    Values pairs;
    EXPECT_TRUE(Config()->GetReplacementCharListOfLDName(pairs));
    EXPECT_EQ(values({"a_", ",-", "b."}), pairs);

    ASSERT_TRUE(Load("[smis]\nreplacementCharListOfLDName = abc\n"));
    Values odd;
    EXPECT_FALSE(Config()->GetReplacementCharListOfLDName(odd));
    EXPECT_EQ(values({"abc"}), odd);

    ASSERT_TRUE(Load("[smis]\nx = 1\n"));
    Values none;
    EXPECT_FALSE(Config()->GetReplacementCharListOfLDName(none));

    Values profiles = values({"stale"});
    Config()->GetSupportedProfiles(profiles);
    EXPECT_TRUE(profiles.empty());
}

// The file shipped with the module must load and hold every documented key
// with its default.
TEST_F(ConfigFile, ShippedFileHoldsTheDefaults) {
    std::ifstream in(TEST_SOURCE_DIR "/provider/etc/smis_provider.conf");
    ASSERT_TRUE(in.good());
    const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    ASSERT_TRUE(Load(text));
    EXPECT_EQ("root/orv", Config()->GetNamespace());
    EXPECT_FALSE(Config()->GetProviderModuleName().empty());
    EXPECT_EQ("ORV_Storage_", Config()->GetPrefix());
    EXPECT_EQ(0, Config()->GetDataStoreType());
    EXPECT_EQ(32, Config()->GetDiskArrayMaxCount());
    EXPECT_EQ(42, ConfigManager::GetConfigIntValue("smis", "MaxDbSize", -1));
    EXPECT_EQ(50, ConfigManager::GetConfigIntValue("smis", "MaxObjectCount", -1));
    EXPECT_EQ(5120, ConfigManager::GetConfigIntValue("smis", "checkMallocSize", -1));
    EXPECT_EQ(3, ConfigManager::GetConfigIntValue("smis", "CmdRetryCount", -1));
    EXPECT_EQ(60, ConfigManager::GetConfigIntValue("smis", "JobLifeTime", -1));
    EXPECT_EQ(60, ConfigManager::GetConfigIntValue("smis", "JobTimeout", -1));
    EXPECT_EQ(20, ConfigManager::GetConfigIntValue("smis", "DefaultSRACapacity", -1));
    EXPECT_EQ(300, ConfigManager::GetConfigIntValue("smis", "capacity_watch_interval", -1));
    EXPECT_TRUE(ConfigManager::GetConfigBoolValue("smis", "enableCopyService", false));
    // A value cannot hold "#", so the database path must come from the default.
    EXPECT_EQ("/opt/pegasus/repository/root#orv.db",
        ConfigManager::GetConfigStringValue("smis", "DBLocation", "/opt/pegasus/repository/root#orv.db"));
    EXPECT_EQ("Local", ConfigManager::GetConfigStringValue("Test", "CommandType", ""));
    EXPECT_TRUE(ConfigManager::GetConfigBoolValue("Test", "UnifyAuthority", false));
    EXPECT_FALSE(ConfigManager::GetConfigBoolValue("Test", "SaveXmlData", true));
    EXPECT_TRUE(ConfigManager::GetConfigBoolValue("Test", "EnableIndication", false));
    EXPECT_FALSE(ConfigManager::GetConfigBoolValue("Test", "CleanRepository", true));
    EXPECT_TRUE(ConfigManager::GetConfigBoolValue("Test", "EnableRPCreation", false));
    EXPECT_TRUE(ConfigManager::GetConfigBoolValue("Test", "EnablePolling", false));
    EXPECT_FALSE(ConfigManager::GetConfigBoolValue("PollingSimulator", "Enable", true));
    EXPECT_EQ("Storage", ConfigManager::GetConfigStringValue("PollingSimulator", "DataFrom", ""));
    EXPECT_EQ("", ConfigManager::GetConfigStringValue("PollingSimulator", "DataFilePath", "x"));
    EXPECT_FALSE(ConfigManager::GetConfigBoolValue("PollingSimulator", "RepeatLoad", true));
    EXPECT_TRUE(ConfigManager::GetConfigBoolValue("PollingSimulator", "DispatchToSMIS", false));
    EXPECT_TRUE(ConfigManager::GetConfigBoolValue("PollingSimulator", "CommandReturnValue", false));
}

}  // namespace
