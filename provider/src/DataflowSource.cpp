#include "DataflowSource.h"

#include <iostream>
#include <list>
#include <memory>

#include "ClassifiedDataSet.h"
#include "Command.h"
#include "ConfigManager.h"
#include "DataFlow.h"
#include "SmisTrace.h"
#include "VexviewCommand.h"

namespace orvsmis {

std::string DataflowFileSource::m_arrayId;

namespace {

// What the file source replays, read from the configuration on first use.
struct FileReplay {
    std::vector<std::string> files;
    std::string path;
    bool repeat = false;
    bool dispatchToSmis = true;
    size_t next = 0;
};

FileReplay& replay() {
    static FileReplay state;
    return state;
}

DataflowFileSource::FailoverFunction& failoverHook() {
    static DataflowFileSource::FailoverFunction hook = nullptr;
    return hook;
}

}  // namespace

void DataflowFileSource::SetFailover(FailoverFunction failover) { failoverHook() = failover; }

void DataflowFileSource::ResetFileList() { replay() = FileReplay(); }

bool DataflowFileSource::LoadData() {
    FileReplay& state = replay();
    if (state.files.empty()) {
        std::list<std::string> names;
        Singleton<ConfigManager>::Instance()->GetConfigValue("PollingSimulator", "DataFileNames", names);
        state.files.assign(names.begin(), names.end());
        state.path = ConfigManager::GetConfigStringValue("PollingSimulator", "DataFilePath", "");
        state.repeat = ConfigManager::GetConfigBoolValue("PollingSimulator", "RepeatLoad", false);
        state.dispatchToSmis = ConfigManager::GetConfigBoolValue("PollingSimulator", "DispatchToSMIS", true);
        state.next = 0;
    }
    if (state.files.empty()) {
        std::cout << "DataFileNames is empty" << std::endl;
        return false;
    }
    if (state.next >= state.files.size()) {
        if (!state.repeat) {
            std::cout << "No enough test data to load." << std::endl;
            return true;
        }
        state.next = 0;
    }
    // The saved documents hold neither controllers, enclosures nor copies.
    static const std::vector<int> types = {0, 2, 3, 5, 6, 7};
    // The name is joined to the path as it stands: the path carries its own
    // separator.
    std::string path = state.path + state.files[state.next];
    ++state.next;
    return LoadDataFromFile(path, types, state.dispatchToSmis);
}

bool DataflowFileSource::LoadDataFromFile(const std::string& path, const std::vector<int>& types,
                                          bool dispatchToSmis) {
    m_parser.Unload();
    if (!m_parser.LoadXMLFile(path.c_str())) {
        SMIS_TRACE(LEVEL1, "Error[ LoadDataFromFile ] : can not load %s", path.c_str());
        return false;
    }
    if (m_dataFlow != nullptr && m_dataFlow->ProcessRawData(*this, types, dispatchToSmis)) return true;
    if (failoverHook() != nullptr) failoverHook()();
    return false;
}

void DataflowFileSource::GetData(int type, std::string& arrayId, std::vector<RawData*>& records) {
    m_parser.QueryData(records, type);
    if (type == RAWDATA_ARRAY && !records.empty()) m_arrayId = records.front()->name;
    arrayId = m_arrayId;
}

bool DataflowFileSource::HasValidData() { return m_parser.GetReturnCode(); }

DataflowStorageSource::DataflowStorageSource(DataFlow* dataFlow) : m_dataFlow(dataFlow) {
    m_commands.push_back(new VexviewCommand(VexviewCommand::VIEW_ALL, m_parser));
}

DataflowStorageSource::DataflowStorageSource(DataFlow* dataFlow, bool withCommands) : m_dataFlow(dataFlow) {
    if (withCommands) m_commands.push_back(new VexviewCommand(VexviewCommand::VIEW_ALL, m_parser));
}

void DataflowStorageSource::AddCommand(QueryCommand* command) {
    if (command != nullptr) m_commands.push_back(command);
}

DataflowStorageSource::~DataflowStorageSource() {
    for (QueryCommand* command : m_commands) delete command;
}

bool DataflowStorageSource::LoadData() {
    bool result = true;
    std::list<std::unique_ptr<ClassifiedDataSet>> sets;
    for (QueryCommand* command : m_commands) {
        if (!command->Execute()) {
            SMIS_TRACE(LEVEL1, "Error[ LoadData ] : %s failed", command->GetCommandLine().c_str());
            result = false;
            break;
        }
        std::vector<int> types;
        command->GetQueryDataType(types);
        if (!types.empty() && m_dataFlow != nullptr) {
            std::unique_ptr<ClassifiedDataSet> set(new ClassifiedDataSet());
            m_dataFlow->ClassifyRawData(*this, types, *set);
            sets.push_back(std::move(set));
        }
        m_parser.Unload();
    }
    m_parser.Unload();
    // Each command's result is a transaction of its own; a failed command
    // above discards what the others classified, before anything changed.
    for (auto& set : sets) {
        if (result) result = m_dataFlow->DispatchRawData(*set, true);
    }
    return result;
}

void DataflowStorageSource::GetData(int type, std::string& arrayId, std::vector<RawData*>& records) {
    m_parser.QueryData(records, type);
    UpdateAssociatedCommands(type, records);
    arrayId = m_lastArrayId;
}

bool DataflowStorageSource::HasValidData() { return m_parser.GetReturnCode(); }

void DataflowStorageSource::UpdateAssociatedCommands(int type, const std::vector<RawData*>& records) {
    if (records.empty()) return;
    if (type == RAWDATA_ARRAY) m_lastArrayId = records.front()->name;
}

DataflowSource* DataflowSourceFactory::CreateSource(int kind, DataFlow* dataFlow) {
    switch (kind) {
        case 0: return new DataflowFileSource(dataFlow);
        case 1: return new DataflowStorageSource(dataFlow);
        default: return nullptr;
    }
}

}  // namespace orvsmis
