#ifndef PROVIDER_TESTS_BLOCKSERVICES_BLOCKSERVICESTESTSUPPORT_H
#define PROVIDER_TESTS_BLOCKSERVICES_BLOCKSERVICESTESTSUPPORT_H

// What the block services tests share: a command runner that records the
// lines instead of running them, a private root with the simulator's state
// and its tools first on PATH, and the loading of the simulator's view into
// the record store and the disk index, as a view load does.

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "ArrayRawData.h"
#include "CommandImpl.h"
#include "ConfigManager.h"
#include "LdRawData.h"
#include "PDmanager.h"
#include "PdRawData.h"
#include "PoolRawData.h"
#include "RawDataCenter.h"
#include "Singleton.h"
#include "StorageExtent.h"
#include "XMLParser.h"
#include "../Pipeline/SimulatorRun.h"

namespace blocktest {

// Every line given to it, in order; answers as told, with the document
// given (if any) loaded into the parser.
class RecordingCommandImpl : public orvsmis::CommandImpl {
public:
    explicit RecordingCommandImpl(std::shared_ptr<std::vector<std::string>> lines, bool answer = true,
                                  const std::string& document = std::string())
        : m_lines(lines), m_answer(answer), m_document(document) {}

    bool Execute(const std::string& commandLine, orvsmis::XMLParser& parser) override {
        m_lines->push_back(commandLine);
        if (!m_document.empty()) {
            parser.LoadChunk(m_document.data(), static_cast<int>(m_document.size()), 0);
            parser.LoadChunk(m_document.data(), 0, 1);
        }
        return m_answer;
    }

private:
    std::shared_ptr<std::vector<std::string>> m_lines;
    bool m_answer;
    std::string m_document;
};

inline void SetConfig(const std::string& section, const std::string& key, const std::string& value) {
    orvsmis::Singleton<orvsmis::ConfigManager>::Instance()->SetConfigValue(section, key,
                                                                          std::list<std::string>(1, value));
}

// The settings a model needs for its class names and keys.
inline void ModelSettings() {
    SetConfig("smis", "namespace", "root/orv");
    SetConfig("general", "dataStoreType", "Memory");
    SetConfig("general", "prefix", "ORV_Storage_");
    SetConfig("general", "vendor", "ORV");
    SetConfig("general", "brand", "ORV");
}

// A private root (SMIS_ROOT) holding a fresh simulator of the small
// template; the simulator's tools come first on PATH and the command layer
// runs them as the module does, without the change of user.
class SimulatorRoot {
public:
    SimulatorRoot() {
        char pattern[] = "/tmp/blocksvc-XXXXXX";
        const char* made = ::mkdtemp(pattern);
        if (made != nullptr) m_path = made;
        ::setenv("SMIS_ROOT", m_path.c_str(), 1);
        const char* path = ::getenv("PATH");
        m_oldPath = path == nullptr ? "" : path;
        ::setenv("PATH", (simrun::SIM_BIN + ":" + m_oldPath).c_str(), 1);
        SetConfig("Test", "CommandType", "Local");
        SetConfig("Test", "UnifyAuthority", "false");
        m_ready = !m_path.empty() && simrun::sim("init --template small") == 0;
    }
    ~SimulatorRoot() {
        simrun::sim("fault clear");
        ::setenv("PATH", m_oldPath.c_str(), 1);
        ::unsetenv("SMIS_ROOT");
        if (!m_path.empty() && ::system(("rm -rf '" + m_path + "'").c_str()) != 0) {
        }
    }
    SimulatorRoot(const SimulatorRoot&) = delete;
    SimulatorRoot& operator=(const SimulatorRoot&) = delete;

    bool Ready() const { return m_ready; }
    const std::string& Path() const { return m_path; }

private:
    std::string m_path;
    std::string m_oldPath;
    bool m_ready = false;
};

// Replaces the stored records and the disk index with the simulator's view
// as it now stands. Returns the array id, "" when the view failed.
inline std::string LoadView() {
    orvsmis::RawDataCenter::Instance()->Destroy();
    orvsmis::PDmanager::Instance()->Destroy();
    orvsmis::XMLParser parser;
    if (!simrun::runView(parser)) return std::string();
    std::string arrayId;
    const int types[] = {orvsmis::RAWDATA_ARRAY, orvsmis::RAWDATA_PD, orvsmis::RAWDATA_POOL, orvsmis::RAWDATA_LD};
    for (int type : types) {
        std::vector<orvsmis::RawData*> records;
        parser.QueryData(records, type);
        for (orvsmis::RawData* record : records) {
            if (type == orvsmis::RAWDATA_ARRAY) arrayId = record->name;
            orvsmis::RawDataCenter::Instance()->AddData(record, arrayId);
            if (type == orvsmis::RAWDATA_PD) {
                orvsmis::PdRawData* pd = static_cast<orvsmis::PdRawData*>(record);
                orvsmis::PDmanager::Instance()->AddData(pd, orvsmis::StorageExtent::WrapReference(pd->PDN, arrayId));
            }
        }
        orvsmis::ReleaseRawDataList(records);
    }
    return arrayId;
}

}  // namespace blocktest

#endif
