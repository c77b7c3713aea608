#ifndef ORVSMIS_DATAFLOW_H
#define ORVSMIS_DATAFLOW_H

#include <string>
#include <vector>

#include <Pegasus/Common/OperationContext.h>

#include "EventArgs.h"
#include "RawData.h"

namespace orvsmis {

class ClassifiedDataSet;
class DataCenter;
class DataflowSource;
class RawDataCenter;

// Classification codes.
enum { CLASSIFIED_ADD = 0, CLASSIFIED_DELETE = 1, CLASSIFIED_MODIFY = 2 };

// The argument of the DataFlowDelegate calls. For the two all-data calls the
// type and classification are 0, the array id "" and the records null.
class HandleDataArgs : public EventArgs {
public:
    HandleDataArgs(Pegasus::OperationContext* ctx, int type, int classification, const std::string& array,
                   const std::vector<RawData*>* list)
        : context(ctx), dataType(type), classifiedType(classification), arrayId(array), records(list) {}

    Pegasus::OperationContext* context;
    int dataType;
    int classifiedType;
    std::string arrayId;
    const std::vector<RawData*>* records;
};

// Told before and after a whole dispatch and each type's part of it: the
// provider opens and commits its repository transaction here.
class DataFlowDelegate {
public:
    virtual ~DataFlowDelegate() {}
    virtual bool BeforeReceiveAllData(EventArgs* args) = 0;
    virtual bool AfterReceiveAllData(EventArgs* args) = 0;
    virtual bool BeforeReceiveDataPerType(EventArgs* args) = 0;
    virtual bool AfterReceiveDataPerType(EventArgs* args) = 0;
};

// Compares the records of a new view with the stored ones and applies the
// differences to the store and, when asked, to the CIM models.
class DataFlow {
public:
    explicit DataFlow(DataFlowDelegate* delegate) : m_delegate(delegate), m_store(nullptr), m_models(nullptr) {}
    // With the record store and the model side given instead of the
    // process-wide data centers; neither is owned.
    DataFlow(DataFlowDelegate* delegate, RawDataCenter* store, DataCenter* models)
        : m_delegate(delegate), m_store(store), m_models(models) {}
    virtual ~DataFlow() {}

    bool ProcessRawData(DataflowSource& source, const std::vector<int>& types, bool dispatchToSmis);
    // The types must begin with the array (0): its record gives the array id.
    void ClassifyRawData(DataflowSource& source, const std::vector<int>& types, ClassifiedDataSet& set);
    // Deletes from the highest type down, then modifies and adds from the
    // lowest up. Never throws: a failure records the status and gives false,
    // leaving the repository transaction open for the caller's fail-over.
    bool DispatchRawData(ClassifiedDataSet& set, bool dispatchToSmis);

    // "Add", "Delete", "Modify"; "No change" for any other code.
    static std::string ClassifiedTypeToString(int classification);

private:
    void classifyByDataType(const std::string& arrayId, int type, const std::vector<RawData*>& records,
                            ClassifiedDataSet& set);
    void dispatchByDataType(Pegasus::OperationContext& context, const std::vector<RawData*>& records,
                            int classification, bool dispatchToSmis);
    void dispatchGuarded(ClassifiedDataSet& set, bool dispatchToSmis, Pegasus::OperationContext& context,
                         std::string& status);

    RawDataCenter* store();
    DataCenter* models();

    DataFlowDelegate* m_delegate;
    RawDataCenter* m_store;
    DataCenter* m_models;
};

}  // namespace orvsmis

#endif
