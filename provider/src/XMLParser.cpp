#include "XMLParser.h"

#include <malloc.h>

#include <cstring>

#include "ConfigManager.h"
#include "LibXML2Filler.h"
#include "RawDataFiller.h"
#include "SmisTrace.h"

namespace orvsmis {

XMLParser::XMLParser() : m_bLoaded(false), m_filler(nullptr), m_bSave(false) {
    m_bSave = ConfigManager::GetConfigBoolValue("Test", "SaveXmlData", false);
}

XMLParser::~XMLParser() { delete m_filler; }

bool XMLParser::LoadChunk(const char* data, int size, int flag) {
    SMIS_TRACE(LEVEL4, "Info[LoadChunk] : size=%d, flag=%d", size, flag);
    if (m_bSave) {
        if (data != nullptr && size > 0) m_buffer.append(data, strnlen(data, static_cast<size_t>(size)));
        if (flag == 1) {
            SMIS_TRACE(LEVEL3, "Returned data : %s", m_buffer.c_str());
            m_buffer.clear();
        }
    }
    if (m_filler == nullptr) m_filler = new LibXML2Filler();
    bool result = m_filler->LoadChunk(data, size, flag);
    if (flag == 1) {
        // Whether the document is good is read afterwards from
        // GetReturnCode.
        m_bLoaded = true;
        return true;
    }
    if (!result) {
        SMIS_TRACE(LEVEL3, "Returned data : %s", m_buffer.c_str());
        m_buffer.clear();
    }
    return result;
}

bool XMLParser::LoadXMLFile(const char* path) {
    Unload();
    if (path == nullptr) return false;
    m_filePath = path;
    m_filler = new LibXML2Filler(m_filePath);
    m_bLoaded = m_filler->GetReturnCode() == 0;
    return m_bLoaded;
}

void XMLParser::Unload() {
    delete m_filler;
    m_filler = nullptr;
    m_bLoaded = false;
    m_buffer.clear();
    std::string().swap(m_buffer);
    m_filePath.clear();
    // A large view leaves its parse tree's pages in the heap; they go back to
    // the system here, or the resident size watched by the memory check would
    // stay at the peak of the largest document ever read.
    ::malloc_trim(0);
}

bool XMLParser::GetReturnCode() const { return m_filler != nullptr && m_filler->GetReturnCode() == 0; }

int XMLParser::QueryData(std::vector<RawData*>& out, int type) const {
    if (!m_bLoaded) return -1;
    RawDataFiller* filler = RawDataFillerFactory::Create(dynamic_cast<const LibXML2Filler*>(m_filler), type);
    if (filler == nullptr) return -1;
    int count = filler->ToStruct(out);
    delete filler;
    return count;
}

}  // namespace orvsmis
