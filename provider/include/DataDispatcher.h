#ifndef ORVSMIS_DATADISPATCHER_H
#define ORVSMIS_DATADISPATCHER_H

#include <string>
#include <vector>

#include <Pegasus/Common/OperationContext.h>

#include "RawData.h"

namespace orvsmis {

// Hands the records of one type to the model of that type.
class DataDispatcher {
public:
    explicit DataDispatcher(int type) : m_dataType(type) {}
    virtual ~DataDispatcher() {}

    virtual void ToCreate(const Pegasus::OperationContext& context, const std::vector<RawData*>& records,
                          const std::string& arrayId) = 0;
    virtual void ToModify(const Pegasus::OperationContext& context, const std::vector<RawData*>& records,
                          const std::string& arrayId) = 0;
    virtual void ToDelete(const Pegasus::OperationContext& context, const std::vector<RawData*>& records,
                          const std::string& arrayId) = 0;

    // Counts one object; every smis/MaxObjectCount objects the repository
    // database's size is checked, and a database over its limit ends the
    // process.
    void PassDataBaseSizeChecking();

    int GetDataType() const { return m_dataType; }

    static int m_nObject;

protected:
    int m_dataType;
};

// Creates the model for each call and gives it every record in order.
class DefaultDataDispatcher : public DataDispatcher {
public:
    explicit DefaultDataDispatcher(int type) : DataDispatcher(type) {}

    void ToCreate(const Pegasus::OperationContext& context, const std::vector<RawData*>& records,
                  const std::string& arrayId) override;
    // Reads each record's stored state and hands old and new to the model;
    // a record missing from the store is CIM_ERR_NOT_FOUND.
    void ToModify(const Pegasus::OperationContext& context, const std::vector<RawData*>& records,
                  const std::string& arrayId) override;
    void ToDelete(const Pegasus::OperationContext& context, const std::vector<RawData*>& records,
                  const std::string& arrayId) override;
};

class DataDispatcherFactory {
public:
    // The caller deletes the dispatcher.
    static DataDispatcher* CreateInstance(int type);
};

}  // namespace orvsmis

#endif
