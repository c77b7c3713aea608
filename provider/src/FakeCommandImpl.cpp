#include "FakeCommandImpl.h"

#include <iterator>

#include "ConfigManager.h"
#include "SmisTrace.h"
#include "XMLParser.h"

namespace orvsmis {

FakeCommandImpl::FakeCommandImpl()
    : m_returnValue(ConfigManager::GetConfigBoolValue("PollingSimulator", "CommandReturnValue", true)),
      m_nextFileIndex(0) {
    if (!m_returnValue) {
        m_returnCode = ConfigManager::GetConfigStringValue("PollingSimulator", "CommandReturnCode", "");
        m_returnMessage = ConfigManager::GetConfigStringValue("PollingSimulator", "CommandReturnMessage", "");
    }
}

bool FakeCommandImpl::Execute(const std::string& command, XMLParser& parser) {
    std::string::size_type blank = command.find(' ');
    if (blank == std::string::npos) return m_returnValue;
    const std::string key = command.substr(0, blank) + "_Data";

    if (m_fileList.empty())
        Singleton<ConfigManager>::Instance()->GetConfigValue("PollingSimulator", key, m_fileList);
    if (m_dataPath.empty())
        m_dataPath = ConfigManager::GetConfigStringValue("PollingSimulator", "DataFilePath", "");
    if (m_fileList.empty()) return m_returnValue;

    if (m_nextFileIndex >= static_cast<int>(m_fileList.size())) m_nextFileIndex = 0;
    std::list<std::string>::const_iterator it = m_fileList.begin();
    std::advance(it, m_nextFileIndex);
    // The path is joined as it stands: a data path wants its own trailing "/".
    const std::string path = m_dataPath + *it;
    ++m_nextFileIndex;

    if (!parser.LoadXMLFile(path.c_str())) {
        SMIS_TRACE(LEVEL1, "Error[LoadXmlFile] : load %s failed.", path.c_str());
        return false;
    }
    if (!parser.GetReturnCode()) {
        SMIS_TRACE(LEVEL1, "Error[GetReturnCode] : ReturnCode=false");
        return false;
    }
    return m_returnValue;
}

}  // namespace orvsmis
