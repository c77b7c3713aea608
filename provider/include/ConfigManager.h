#ifndef ORVSMIS_CONFIGMANAGER_H
#define ORVSMIS_CONFIGMANAGER_H

#include <list>
#include <map>
#include <string>

#include "Singleton.h"

namespace orvsmis {

// The module's settings: the file "/opt/pegasus/etc/smis_provider.conf" kept
// in memory as sections of keys, each key a list of string values. The
// section "general" is seeded with defaults before the file is read.
class ConfigManager {
public:
    typedef std::list<std::string> ValueList;
    typedef std::map<std::string, ValueList> Section;

    static const char* const CONFIG_FILE;

    ConfigManager();
    virtual ~ConfigManager();

    bool Initialize();
    bool IsInitialized() const { return m_bInitialized; }

    std::string GetProviderModuleName();
    std::string GetLibName();
    std::string GetVendor();
    std::string GetBrand();
    std::string GetManufacture();
    std::string GetNamespace();
    std::string GetPrefix();
    int GetDiskArrayMaxCount();
    int GetDataStoreType();
    std::string GetDescription();
    void GetSupportedProfiles(std::list<std::string>& list);
    std::string GetSetting(const std::string& key);
    bool GetReplacementCharListOfLDName(std::list<std::string>& list);

    bool GetConfigValue(const std::string& section, const std::string& key, std::list<std::string>& list);
    static bool GetConfigBoolValue(const std::string& section, const std::string& key, bool defaultValue);
    static int GetConfigIntValue(const std::string& section, const std::string& key, int defaultValue);
    static std::string GetConfigStringValue(const std::string& section, const std::string& key,
                                            const std::string& defaultValue);
    void SetConfigValue(const std::string& section, const std::string& key, const std::list<std::string>& list);

    // Reads one file into the sections (the defaults are not reset): false
    // when it cannot be opened or a line is bad.
    bool LoadFile(const std::string& path);

private:
    enum LineKind { LINE_BAD = -1, LINE_EMPTY = 1, LINE_COMMENT = 2, LINE_SECTION = 3, LINE_KEY = 4 };

    static std::string trimLine(const std::string& line);
    static int parserLine(const std::string& line, std::string& section, std::string& key, ValueList& values);
    const ValueList* find(const std::string& section, const std::string& key) const;
    std::string firstOr(const std::string& section, const std::string& key, const char* absentTrace);

    std::map<std::string, Section> m_sections;
    bool m_bInitialized;
};

}  // namespace orvsmis

#endif
