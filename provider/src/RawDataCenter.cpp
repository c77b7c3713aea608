#include "RawDataCenter.h"

#include <cstdio>
#include <iostream>

#include "ConfigManager.h"
#include "DataStore.h"
#include "DataStoreInMem.h"
#include "SmisTrace.h"

namespace orvsmis {

namespace {

std::string countLine(const char* verb, const std::vector<RawData*>& records) {
    char line[128];
    std::snprintf(line, sizeof(line), "%s data | %s | %llu", verb, RawData::TypeToString(records.front()->type).c_str(),
                  static_cast<unsigned long long>(records.size()));
    return line;
}

void announce(const std::string& line) {
    SMIS_TRACE(LEVEL4, "%s", line.c_str());
    std::cout << line << std::endl;
}

}  // namespace

RawDataCenter::RawDataCenter() : m_store(nullptr) {
    if (Singleton<ConfigManager>::Instance()->GetDataStoreType() == 0)
        m_store = new DataStoreInMem();
    else
        m_store = new DataStoreInFile();
}

RawDataCenter::~RawDataCenter() { delete m_store; }

void RawDataCenter::AddData(const std::vector<RawData*>* records, const std::string& arrayId) {
    if (records == nullptr || records->empty()) return;
    announce(countLine("Add", *records));
    for (RawData* record : *records) m_store->AddData(record, arrayId);
}

void RawDataCenter::DeleteData(const std::vector<RawData*>* records, const std::string& arrayId) {
    if (records == nullptr || records->empty()) return;
    announce(countLine("Delete", *records));
    for (RawData* record : *records) m_store->DeleteData(record, arrayId);
}

void RawDataCenter::ModifyData(const std::vector<RawData*>* records, const std::string& arrayId) {
    if (records == nullptr || records->empty()) return;
    int type = records->front()->type;
    if (type == RAWDATA_POOL || type == RAWDATA_LD) {
        // Pools and logical disks change often and in numbers: their names
        // go to the trace only.
        std::string message = "Start to modify " + RawData::TypeToString(type) + "s. [";
        for (RawData* record : *records) message += record->name + ",";
        message += "]";
        SMIS_TRACE(LEVEL4, "%s", message.c_str());
    } else {
        announce(countLine("Modify", *records));
    }
    for (RawData* record : *records) m_store->ModifyData(record, arrayId);
}

void RawDataCenter::Destroy() { m_store->Destroy(); }

void RawDataCenter::AddData(const RawData* record, const std::string& arrayId) { m_store->AddData(record, arrayId); }

void RawDataCenter::DeleteData(const RawData* record, const std::string& arrayId) {
    m_store->DeleteData(record, arrayId);
}

void RawDataCenter::ModifyData(const RawData* record, const std::string& arrayId) {
    m_store->ModifyData(record, arrayId);
}

bool RawDataCenter::GetData(const std::string& name, int type, const std::string& arrayId, RawData** out) {
    return m_store->FindData(name, type, arrayId, out);
}

bool RawDataCenter::GetData(int type, const std::string& arrayId, std::vector<RawData*>& list) {
    return m_store->FindData(type, arrayId, &list);
}

bool RawDataCenter::validateArrayData(const std::string& arrayId) {
    RawData* record = nullptr;
    if (!m_store->FindData(arrayId, RAWDATA_ARRAY, "", &record) || record == nullptr) return false;
    record->Release();
    return true;
}

}  // namespace orvsmis
