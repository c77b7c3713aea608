#include "ClassifiedDataSet.h"

namespace orvsmis {

const std::string DataClassificationType::Add = "Add";
const std::string DataClassificationType::Delete = "Delete";
const std::string DataClassificationType::Modify = "Modify";

ClassifiedDataSet::ClassifiedDataSet() {
    m_tables[DataClassificationType::Add];
    m_tables[DataClassificationType::Delete];
    m_tables[DataClassificationType::Modify];
}

ClassifiedDataSet::~ClassifiedDataSet() { Clear(); }

void ClassifiedDataSet::AddItem(const std::string& classification, RawData* record) {
    if (record == nullptr) return;
    TypeTable* table = GetClassifiedDataTable(classification);
    if (table == nullptr) return;
    if (table->find(record->type) == table->end()) {
        // A type enters all three tables at once, so they always hold the
        // same types.
        for (auto& entry : m_tables) {
            if (entry.second.find(record->type) == entry.second.end())
                entry.second[record->type] = new RecordList();
        }
    }
    record->AddRef();
    (*table)[record->type]->push_back(record);
}

ClassifiedDataSet::TypeTable* ClassifiedDataSet::GetClassifiedDataTable(const std::string& classification) {
    auto it = m_tables.find(classification);
    return it == m_tables.end() ? nullptr : &it->second;
}

void ClassifiedDataSet::Clear() {
    for (auto& entry : m_tables) {
        for (auto& typeEntry : entry.second) {
            for (RawData* record : *typeEntry.second) record->Release();
            delete typeEntry.second;
        }
        entry.second.clear();
    }
}

}  // namespace orvsmis
