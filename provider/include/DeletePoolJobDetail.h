#ifndef ORVSMIS_DELETEPOOLJOBDETAIL_H
#define ORVSMIS_DELETEPOOLJOBDETAIL_H

#include <string>

#include "DetailArgs.h"
#include "JobDetail.h"

namespace orvsmis {

// The removal of a pool: operation 2, kind 5.
class DeletePoolDetailArgs : public DetailArgs {
public:
    DeletePoolDetailArgs() : DetailArgs(OPERATION_DELETE, ELEMENT_POOL) {}

    std::string arrayId;
    std::string poolNumber;
};

// Unbinds a pool; done when the view no longer shows it.
class DeletePoolJobDetail : public JobDetail {
public:
    // Takes ownership of args.
    explicit DeletePoolJobDetail(DeletePoolDetailArgs* args);
    virtual ~DeletePoolJobDetail();

    virtual bool Execute();
    virtual bool Finish(Pegasus::Array<Pegasus::CIMParamValue>& out);
    virtual void Recover();
    virtual DetailArgs* GetDetail();
    virtual std::string GetDescription();

private:
    DeletePoolDetailArgs* m_args;
};

}  // namespace orvsmis

#endif
