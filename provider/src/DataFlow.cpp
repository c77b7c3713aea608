#include "DataFlow.h"

#include <chrono>
#include <iostream>
#include <string>
#include <unordered_map>
#include <vector>

#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/String.h>

#include "ClassifiedDataSet.h"
#include "DataflowSource.h"
#include "Exception.h"
#include "RawDataCenter.h"
#include "SmisDataCenter.h"
#include "SmisStatusRecorder.h"
#include "SmisTrace.h"

namespace orvsmis {

namespace {

const char* const RELOAD = "Errors occur. Provider will reload";

std::string text(const Pegasus::String& s) { return std::string(static_cast<const char*>(s.getCString())); }

// Keeps a reference on each record of a list and gives them back at the end
// of the scope.
class RecordListGuard {
public:
    explicit RecordListGuard(std::vector<RawData*>& records) : m_records(records) {}
    ~RecordListGuard() { ReleaseRawDataList(m_records); }

private:
    std::vector<RawData*>& m_records;
};

}  // namespace

RawDataCenter* DataFlow::store() { return m_store != nullptr ? m_store : RawDataCenter::Instance(); }

DataCenter* DataFlow::models() { return m_models != nullptr ? m_models : SmisDataCenter::Instance(); }

std::string DataFlow::ClassifiedTypeToString(int classification) {
    switch (classification) {
        case CLASSIFIED_ADD: return "Add";
        case CLASSIFIED_DELETE: return "Delete";
        case CLASSIFIED_MODIFY: return "Modify";
        default: return "No change";
    }
}

bool DataFlow::ProcessRawData(DataflowSource& source, const std::vector<int>& types, bool dispatchToSmis) {
    auto start = std::chrono::steady_clock::now();
    if (!source.HasValidData()) {
        SMIS_TRACE(LEVEL2, "Info [ ProcessRawData ] : parser has invalid data, may not happen.");
        return false;
    }
    ClassifiedDataSet set;
    ClassifyRawData(source, types, set);
    bool result = DispatchRawData(set, dispatchToSmis);
    if (result) {
        SMIS_TRACE(LEVEL3, "Info [ ProcessRawData ] : load all data finished");
        std::cout << "Load raw data finished!" << std::endl;
    }
    long seconds = static_cast<long>(
        std::chrono::duration_cast<std::chrono::seconds>(std::chrono::steady_clock::now() - start).count());
    char line[96];
    std::snprintf(line, sizeof(line), "%s cost time : %d min %d sec", "Total", static_cast<int>(seconds / 60),
                  static_cast<int>(seconds % 60));
    std::cout << line << std::endl;
    return result;
}

void DataFlow::ClassifyRawData(DataflowSource& source, const std::vector<int>& types, ClassifiedDataSet& set) {
    SMIS_TRACE(LEVEL3, "Classifying raw data.");
    std::string arrayId;
    for (int type : types) {
        std::vector<RawData*> records;
        RecordListGuard guard(records);
        source.GetData(type, arrayId, records);
        classifyByDataType(arrayId, type, records, set);
    }
    SMIS_TRACE(LEVEL3, "Classification finished");
}

void DataFlow::classifyByDataType(const std::string& arrayId, int type, const std::vector<RawData*>& records,
                                  ClassifiedDataSet& set) {
    // Without an array record nothing can be told apart.
    if (arrayId.empty()) return;

    int added = 0, deleted = 0, modified = 0;
    // Identity always includes the name, so each side is looked up by name
    // rather than by a walk over the other side: a load of thousands of
    // volumes would otherwise compare every pair. Where names repeat, the
    // first record with the name answers, as a walk from the front would.
    std::unordered_map<std::string, std::vector<RawData*>> newByName;
    newByName.reserve(records.size());
    for (RawData* record : records) {
        if (record != nullptr) newByName[record->name].push_back(record);
    }
    std::vector<RawData*> stored;
    RecordListGuard guard(stored);
    store()->GetData(type, arrayId, stored);
    std::unordered_map<std::string, RawData*> storedByName;
    storedByName.reserve(stored.size());
    for (RawData* old : stored) {
        storedByName.emplace(old->name, old);
        bool kept = false;
        const auto same = newByName.find(old->name);
        if (same != newByName.end()) {
            for (RawData* record : same->second) {
                if (old->IsEqual(record)) {
                    kept = true;
                    break;
                }
            }
        }
        if (!kept) {
            set.AddItem(DataClassificationType::Delete, old);
            ++deleted;
        }
    }

    // A record that keeps its name but fails the identity test is an old
    // one deleted above and a new one added here.
    for (RawData* record : records) {
        if (record == nullptr) continue;
        const auto found = storedByName.find(record->name);
        RawData* old = found == storedByName.end() || found->second->type != record->type ? nullptr : found->second;
        if (old == nullptr || !old->IsEqual(record)) {
            set.AddItem(DataClassificationType::Add, record);
            ++added;
        } else if (old->HasChanged(record)) {
            set.AddItem(DataClassificationType::Modify, record);
            ++modified;
        }
    }
    if (added != 0 || deleted != 0 || modified != 0) {
        SMIS_TRACE(LEVEL3, "Info [ ProcessRawData ] : classified %s result : vAdd=%d, vDel=%d, vMdf=%d",
                   RawData::TypeToString(type).c_str(), added, deleted, modified);
    }
}

bool DataFlow::DispatchRawData(ClassifiedDataSet& set, bool dispatchToSmis) {
    std::string status = "abnormal (unknown)";
    try {
        SMIS_TRACE(LEVEL3, "Dispatching raw data");
        Pegasus::OperationContext context;
        dispatchGuarded(set, dispatchToSmis, context, status);
        SMIS_TRACE(LEVEL3, "Dispatching finished");
        return true;
    } catch (...) {
        try {
            RecordSmisLayerStatus(2, status.c_str());
            SMIS_TRACE(LEVEL1, "Error [ ProcessRawData ] : Load failed!");
        } catch (...) {
            // Nothing leaves a load: the status file is best effort here.
        }
        return false;
    }
}

void DataFlow::dispatchGuarded(ClassifiedDataSet& set, bool dispatchToSmis, Pegasus::OperationContext& context,
                               std::string& status) {
    try {
        if (dispatchToSmis) {
            SMIS_TRACE(LEVEL3, "Info[ ProcessRawData ] : call \"BeforeLoadAllData\" function");
            HandleDataArgs args(&context, 0, 0, "", nullptr);
            if (m_delegate != nullptr) m_delegate->BeforeReceiveAllData(&args);
        }
        // Dependents go before what they depend on; additions go the other
        // way, so that a new model can read its parents.
        ClassifiedDataSet::TypeTable* deletes = set.GetClassifiedDataTable(DataClassificationType::Delete);
        for (auto it = deletes->rbegin(); it != deletes->rend(); ++it) {
            if (!it->second->empty()) dispatchByDataType(context, *it->second, CLASSIFIED_DELETE, dispatchToSmis);
        }
        ClassifiedDataSet::TypeTable* modifies = set.GetClassifiedDataTable(DataClassificationType::Modify);
        for (auto& entry : *modifies) {
            if (!entry.second->empty()) dispatchByDataType(context, *entry.second, CLASSIFIED_MODIFY, dispatchToSmis);
        }
        ClassifiedDataSet::TypeTable* adds = set.GetClassifiedDataTable(DataClassificationType::Add);
        for (auto& entry : *adds) {
            if (!entry.second->empty()) dispatchByDataType(context, *entry.second, CLASSIFIED_ADD, dispatchToSmis);
        }
        if (dispatchToSmis) {
            SMIS_TRACE(LEVEL3, "Info [ ProcessRawData ] : call \"AfterLoadAllData\" function");
            HandleDataArgs args(&context, 0, 0, "", nullptr);
            if (m_delegate != nullptr) m_delegate->AfterReceiveAllData(&args);
        }
    } catch (const Pegasus::CIMException& e) {
        status = "abnormal (smis layer)";
        std::string word = Pegasus::cimStatusCodeToString(e.getCode());
        std::string message = text(e.getMessage());
        SMIS_TRACE(LEVEL1, "Error[ %s ] : %s ,%s", word.c_str(), message.c_str(), RELOAD);
        std::cout << "Error[ " << word << " ] " << message << std::endl;
        throw;
    } catch (const Pegasus::Exception& e) {
        status = "abnormal (smis layer)";
        std::string message = text(e.getMessage());
        SMIS_TRACE(LEVEL1, "Error[ ProcessRawData ] : %s ,%s", message.c_str(), RELOAD);
        std::cout << message << std::endl;
        throw;
    } catch (const orvsmis::Exception& e) {
        status = "abnormal (data center)";
        SMIS_TRACE(LEVEL1, "Error[ ProcessRawData ] : %s ,%s", ("Exception:" + e.GetMessage()).c_str(), RELOAD);
        std::cout << "Exception:" << e.GetMessage() << std::endl;
        throw;
    }
}

void DataFlow::dispatchByDataType(Pegasus::OperationContext& context, const std::vector<RawData*>& records,
                                  int classification, bool dispatchToSmis) {
    int type = records.front()->type;
    std::string arrayId = records.front()->arrayId;
    HandleDataArgs args(&context, type, classification, arrayId, &records);
    if (dispatchToSmis && m_delegate != nullptr) m_delegate->BeforeReceiveDataPerType(&args);
    SMIS_TRACE(LEVEL3, "Info [ DispatchData ] : %s %s data, count = %d", ClassifiedTypeToString(classification).c_str(),
               RawData::TypeToString(type).c_str(), static_cast<int>(records.size()));
    switch (classification) {
        case CLASSIFIED_ADD:
            // The store first: models read the new record while they build.
            store()->AddData(&records, arrayId);
            if (dispatchToSmis) models()->AddData(&records, arrayId);
            break;
        case CLASSIFIED_DELETE:
            // The models first, while the store still holds the old state.
            if (dispatchToSmis) models()->DeleteData(&records, arrayId);
            store()->DeleteData(&records, arrayId);
            break;
        case CLASSIFIED_MODIFY:
            if (dispatchToSmis) models()->ModifyData(&records, arrayId);
            store()->ModifyData(&records, arrayId);
            break;
        default:
            throw InvalidParamException("Classified type unknown");
    }
    if (dispatchToSmis && m_delegate != nullptr) m_delegate->AfterReceiveDataPerType(&args);
}

}  // namespace orvsmis
