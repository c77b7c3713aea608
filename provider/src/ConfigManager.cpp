#include "ConfigManager.h"

#include <cstdlib>
#include <fstream>
#include <sys/stat.h>

#include "FixedPath.h"
#include "SmisTrace.h"

namespace orvsmis {

const char* const ConfigManager::CONFIG_FILE = "/opt/pegasus/etc/smis_provider.conf";

ConfigManager::ConfigManager() : m_bInitialized(false) {}

ConfigManager::~ConfigManager() {}

bool ConfigManager::Initialize() {
    m_bInitialized = false;
    m_sections.clear();
    Section& general = m_sections["general"];
    general["dataStoreType"] = ValueList(1, "Memory");
    general["prefix"] = ValueList(1, "ORV_Storage_");
    general["diskArrayMaxCount"] = ValueList(1, "32");
    general["description"] = ValueList(1, "Storage");
    general["brand"] = ValueList(1, "ORV");
    general["vendor"] = ValueList(1, "ORV");
    if (!LoadFile(FixedPath::Resolve(CONFIG_FILE))) {
        SMIS_TRACE(LEVEL1, "Load Config File Failure.");
        return false;
    }
    m_bInitialized = true;
    return true;
}

// Only the blank is trimmed: a tab stays part of the text.
std::string ConfigManager::trimLine(const std::string& line) {
    const std::string::size_type first = line.find_first_not_of(' ');
    if (first == std::string::npos) return std::string();
    const std::string::size_type last = line.find_last_not_of(' ');
    return line.substr(first, last - first + 1);
}

int ConfigManager::parserLine(const std::string& rawLine, std::string& section, std::string& key,
                              ValueList& values) {
    std::string line = trimLine(rawLine);
    if (line.empty()) return LINE_EMPTY;
    if (line[0] == '#') return LINE_COMMENT;
    const std::string::size_type hash = line.find('#');
    if (hash != std::string::npos) {
        // The character in front of the "#" goes with the comment.
        line = trimLine(line.substr(0, hash - 1));
    }
    if (!line.empty() && line[0] == '[' && line[line.size() - 1] == ']') {
        const std::string::size_type open = line.find('[');
        const std::string::size_type close = line.rfind(']');
        const std::string name = close > open ? trimLine(line.substr(open + 1, close - open - 1)) : std::string();
        if (name.empty()) return LINE_BAD;
        section = name;
        return LINE_SECTION;
    }
    const std::string::size_type eq = line.find('=');
    if (eq == std::string::npos) return LINE_BAD;
    key = trimLine(line.substr(0, eq));
    if (key.empty()) return LINE_BAD;
    const std::string value = trimLine(line.substr(eq + 1));
    values.clear();
    if (value.find(',') == std::string::npos) {
        values.push_back(value);
        return LINE_KEY;
    }
    std::string::size_type start = 0;
    while (true) {
        const std::string::size_type comma = value.find(',', start);
        const std::string item =
            trimLine(value.substr(start, comma == std::string::npos ? std::string::npos : comma - start));
        if (item.empty()) return LINE_BAD;
        values.push_back(item);
        if (comma == std::string::npos) break;
        start = comma + 1;
    }
    return LINE_KEY;
}

bool ConfigManager::LoadFile(const std::string& path) {
    // A folder opens like a file and reads as empty: refuse it outright.
    struct stat st;
    if (::stat(path.c_str(), &st) != 0 || !S_ISREG(st.st_mode)) {
        SMIS_TRACE(LEVEL1, "Error[ LoadConfigFile ] : %s is not a readable file", path.c_str());
        return false;
    }
    std::ifstream in(path.c_str());
    if (!in) {
        SMIS_TRACE(LEVEL1, "Error[ LoadConfigFile ] : cannot open %s", path.c_str());
        return false;
    }
    std::string line;
    std::string section;
    int lineNumber = 0;
    while (std::getline(in, line)) {
        ++lineNumber;
        line = trimLine(line);
        if (line.empty()) continue;
        std::string key;
        ValueList values;
        std::string nextSection = section;
        const int kind = parserLine(line, nextSection, key, values);
        if (kind == LINE_BAD) {
            SMIS_TRACE(LEVEL1, "Error[ LoadConfigFile ] : bad line %d in %s", lineNumber,
                path.c_str());
            return false;
        }
        if (kind == LINE_SECTION) {
            section = nextSection;
            continue;
        }
        if (section.empty()) continue;  // keys in front of the first section are ignored
        if (kind != LINE_KEY) continue;
        if (section == "general") {
            SetConfigValue(section, key, values);
            continue;
        }
        Section& entries = m_sections[section];
        if (entries.find(key) != entries.end()) {
            // Only "general" may override: elsewhere a second definition is an error.
            SMIS_TRACE(LEVEL1, "Error[ LoadConfigFile ] : key %s defined twice in [%s], line %d",
                key.c_str(), section.c_str(), lineNumber);
            return false;
        }
        entries[key] = values;
    }
    if (in.bad()) {
        SMIS_TRACE(LEVEL1, "Error[ LoadConfigFile ] : read error in %s", path.c_str());
        return false;
    }
    return true;
}

const ConfigManager::ValueList* ConfigManager::find(const std::string& section, const std::string& key) const {
    std::map<std::string, Section>::const_iterator s = m_sections.find(section);
    if (s == m_sections.end()) return nullptr;
    Section::const_iterator k = s->second.find(key);
    if (k == s->second.end()) return nullptr;
    return &k->second;
}

std::string ConfigManager::firstOr(const std::string& section, const std::string& key, const char* absentTrace) {
    const ValueList* values = find(section, key);
    if (values == nullptr || values->empty()) {
        SMIS_TRACE(LEVEL4, "%s", absentTrace);
        return std::string();
    }
    return values->front();
}

std::string ConfigManager::GetProviderModuleName() {
    return firstOr("smis", "providerModuleName", "Get Provider Module Name Is Not Exist.");
}
std::string ConfigManager::GetLibName() { return firstOr("smis", "providerModuleName", "Lib  Name Is Not Exist."); }
std::string ConfigManager::GetVendor() { return firstOr("general", "vendor", "Vendor Is Not Exist."); }
std::string ConfigManager::GetBrand() { return firstOr("general", "brand", "Brand Is Not Exist."); }
std::string ConfigManager::GetManufacture() { return firstOr("general", "vendor", "Manufacture Is Not Exist."); }
std::string ConfigManager::GetNamespace() { return firstOr("smis", "namespace", "Namespace Is Not Exist."); }
std::string ConfigManager::GetPrefix() { return firstOr("general", "prefix", "Prefix Is Not Exist."); }
std::string ConfigManager::GetDescription() { return firstOr("general", "description", "Description Is Not Exist."); }

int ConfigManager::GetDiskArrayMaxCount() {
    const ValueList* values = find("general", "diskArrayMaxCount");
    if (values == nullptr || values->empty()) {
        SMIS_TRACE(LEVEL4, "DiskArrayMaxCount Is Not Exist.");
        return 0;
    }
    return std::atoi(values->front().c_str());
}

int ConfigManager::GetDataStoreType() {
    const ValueList* values = find("general", "dataStoreType");
    if (values == nullptr || values->empty()) {
        SMIS_TRACE(LEVEL4, "DataStoreType Is Not Exist.");
        return 2;
    }
    return std::atoi(values->front().c_str());
}

void ConfigManager::GetSupportedProfiles(std::list<std::string>& list) { list.clear(); }

std::string ConfigManager::GetSetting(const std::string& key) {
    const ValueList* values = find("general", key);
    return values == nullptr || values->empty() ? std::string() : values->front();
}

bool ConfigManager::GetReplacementCharListOfLDName(std::list<std::string>& list) {
    const ValueList* values = find("smis", "replacementCharListOfLDName");
    if (values == nullptr) return false;
    list = *values;
    // The pairs may themselves hold a comma, which the parser took for a
    // separator: join the values again and cut the run into pairs.
    std::string joined;
    for (ValueList::const_iterator it = values->begin(); it != values->end(); ++it) {
        if (it != values->begin()) joined += ",";
        joined += *it;
    }
    if (joined.size() % 2 != 0) return false;
    list.clear();
    for (std::string::size_type i = 0; i < joined.size(); i += 2) list.push_back(joined.substr(i, 2));
    return true;
}

bool ConfigManager::GetConfigValue(const std::string& section, const std::string& key, std::list<std::string>& list) {
    const ValueList* values = find(section, key);
    if (values == nullptr) return false;
    list.insert(list.end(), values->begin(), values->end());
    return true;
}

bool ConfigManager::GetConfigBoolValue(const std::string& section, const std::string& key, bool defaultValue) {
    const ValueList* values = Singleton<ConfigManager>::Instance()->find(section, key);
    if (values == nullptr) return defaultValue;
    return !values->empty() && values->front() == "true";
}

int ConfigManager::GetConfigIntValue(const std::string& section, const std::string& key, int defaultValue) {
    const ValueList* values = Singleton<ConfigManager>::Instance()->find(section, key);
    if (values == nullptr) return defaultValue;
    return values->empty() ? 0 : std::atoi(values->front().c_str());
}

std::string ConfigManager::GetConfigStringValue(const std::string& section, const std::string& key,
                                                const std::string& defaultValue) {
    const ValueList* values = Singleton<ConfigManager>::Instance()->find(section, key);
    if (values == nullptr) return defaultValue;
    return values->empty() ? std::string() : values->front();
}

void ConfigManager::SetConfigValue(const std::string& section, const std::string& key,
                                   const std::list<std::string>& list) {
    m_sections[section][key] = list;
}

}  // namespace orvsmis
