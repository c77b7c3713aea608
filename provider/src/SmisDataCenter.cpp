#include "SmisDataCenter.h"

#include <memory>

#include <Pegasus/Common/OperationContext.h>

#include "DataDispatcher.h"
#include "RepositoryCleaner.h"

namespace orvsmis {

namespace {

enum Change { CHANGE_ADD, CHANGE_DELETE, CHANGE_MODIFY };

void dispatch(Change change, const std::vector<RawData*>* records, const std::string& arrayId) {
    if (records == nullptr || records->empty()) return;
    std::unique_ptr<DataDispatcher> dispatcher(DataDispatcherFactory::CreateInstance(records->front()->type));
    Pegasus::OperationContext context;
    switch (change) {
        case CHANGE_ADD: dispatcher->ToCreate(context, *records, arrayId); break;
        case CHANGE_DELETE: dispatcher->ToDelete(context, *records, arrayId); break;
        case CHANGE_MODIFY: dispatcher->ToModify(context, *records, arrayId); break;
    }
}

}  // namespace

void SmisDataCenter::AddData(const std::vector<RawData*>* records, const std::string& arrayId) {
    dispatch(CHANGE_ADD, records, arrayId);
}

void SmisDataCenter::DeleteData(const std::vector<RawData*>* records, const std::string& arrayId) {
    dispatch(CHANGE_DELETE, records, arrayId);
}

void SmisDataCenter::ModifyData(const std::vector<RawData*>* records, const std::string& arrayId) {
    dispatch(CHANGE_MODIFY, records, arrayId);
}

void SmisDataCenter::Destroy() { RepositoryCleaner::Clean(false); }

}  // namespace orvsmis
