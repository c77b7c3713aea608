#include "DataStore.h"

#include "Exception.h"
#include "SmisTrace.h"

namespace orvsmis {

MemBaseData::MemBaseData(RawData* record, const std::string& arrayId) : m_data(record), m_arrayId(arrayId) {
    if (m_data != nullptr) m_data->AddRef();
}

MemBaseData::~MemBaseData() {
    if (m_data != nullptr) m_data->Release();
}

bool MemBaseData::IsEqual(const std::string& name, int type) const {
    return m_data != nullptr && m_data->name == name && m_data->type == type;
}

void MemBaseData::Modify(const RawData* record) {
    if (record == nullptr || m_data == nullptr) return;
    if (record->type != m_data->type) {
        // Only a programming error gets here: the store finds records by
        // type. It fails the load rather than the whole server.
        SMIS_TRACE(LEVEL1, "Error[ MemBaseData::Modify ] : type %d given for a record of type %d", record->type,
                   m_data->type);
        throw InvalidParamException("Invalid value");
    }
    m_data->Copy(record);
}

bool MemBaseData::HasChanged(RawData* record) {
    return m_data != nullptr && m_data->HasChanged(record);
}

}  // namespace orvsmis
