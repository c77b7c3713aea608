#include "DataDispatcher.h"

#include <memory>

#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/String.h>

#include "ConfigManager.h"
#include "EventArgs.h"
#include "IndicationSender.h"
#include "MemoryCautioner.h"
#include "Model.h"
#include "ModelFactory.h"
#include "RawDataCenter.h"
#include "ResultInfo.h"
#include "SmisStatusRecorder.h"
#include "SmisTrace.h"

namespace orvsmis {

int DataDispatcher::m_nObject = 0;

void DataDispatcher::PassDataBaseSizeChecking() {
    static const int limit = ConfigManager::GetConfigIntValue("smis", "MaxObjectCount", 50);
    ++m_nObject;
    // Compared by equality: only here is the counter reset, so a count that
    // has run past the limit never checks again.
    if (m_nObject != limit) return;

    ResultInfo info;
    if (MemoryCautioner::Instance()->PassDataBaseThresholdCheck(info)) {
        m_nObject = 0;
        return;
    }
    try {
        SMIS_TRACE(LEVEL1, "CritialError[%s]: %s. Cimserver exit.", info.code.c_str(), info.message.c_str());
        IndicationSender sender;
        sender.SendCriticalAlertIndication(Pegasus::String(info.message.c_str()));
        if (info.code == "00031") RecordSmisLayerStatus(2, "abnormal (max database size)");
    } catch (...) {
        // The exit below happens whatever went wrong on the way to it.
    }
    MemoryCautioner::CriticalExit();
}

namespace {

std::unique_ptr<Model> createModel(int type) {
    std::unique_ptr<Model> model(ModelFactory::CreateModel(type));
    if (!model) SMIS_TRACE(LEVEL1, "Error[ CreateModel ] : invalid model type : %d", type);
    return model;
}

}  // namespace

void DefaultDataDispatcher::ToCreate(const Pegasus::OperationContext& context, const std::vector<RawData*>& records,
                                     const std::string& arrayId) {
    std::unique_ptr<Model> model = createModel(m_dataType);
    if (!model) return;
    for (RawData* record : records) {
        PassDataBaseSizeChecking();
        DataEventArgs args(context, record, nullptr, arrayId);
        model->Create(&args);
    }
}

void DefaultDataDispatcher::ToModify(const Pegasus::OperationContext& context, const std::vector<RawData*>& records,
                                     const std::string& arrayId) {
    std::unique_ptr<Model> model = createModel(m_dataType);
    if (!model) return;
    for (RawData* record : records) {
        PassDataBaseSizeChecking();
        RawData* old = nullptr;
        if (!RawDataCenter::Instance()->GetData(record->name, m_dataType, arrayId, &old) || old == nullptr) {
            std::string text = "in DefaultDataDispatcher::ToModify() : Get " + RawData::TypeToString(m_dataType) +
                               " From DataCenter Failed";
            SMIS_TRACE(LEVEL1, "%s", text.c_str());
            throw Pegasus::CIMException(Pegasus::CIM_ERR_NOT_FOUND, Pegasus::String(text.c_str()));
        }
        try {
            DataEventArgs args(context, record, old, arrayId);
            model->Modify(&args);
        } catch (...) {
            old->Release();
            throw;
        }
        old->Release();
    }
}

void DefaultDataDispatcher::ToDelete(const Pegasus::OperationContext& context, const std::vector<RawData*>& records,
                                     const std::string& arrayId) {
    std::unique_ptr<Model> model = createModel(m_dataType);
    if (!model) return;
    for (RawData* record : records) {
        PassDataBaseSizeChecking();
        DataEventArgs args(context, record, nullptr, arrayId);
        model->Delete(&args);
    }
}

DataDispatcher* DataDispatcherFactory::CreateInstance(int type) { return new DefaultDataDispatcher(type); }

}  // namespace orvsmis
