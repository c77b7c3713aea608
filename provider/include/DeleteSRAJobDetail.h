#ifndef ORVSMIS_DELETESRAJOBDETAIL_H
#define ORVSMIS_DELETESRAJOBDETAIL_H

#include <string>

#include "DetailArgs.h"
#include "JobDetail.h"

namespace orvsmis {

// The removal of a pool's snapshot reserve area: operation 2, kind 8.
class DeleteSRADetailArgs : public DetailArgs {
public:
    enum { ELEMENT_SRA = 8 };

    DeleteSRADetailArgs() : DetailArgs(OPERATION_DELETE, ELEMENT_SRA) {}

    std::string poolNumber;
};

// Unbinds the snapshot reserve area of a pool. The view holds no record of
// the area, so the job counts as done at the first view after the command.
class DeleteSRAJobDetail : public JobDetail {
public:
    // Takes ownership of args.
    explicit DeleteSRAJobDetail(DeleteSRADetailArgs* args);
    virtual ~DeleteSRAJobDetail();

    virtual bool Execute();
    virtual bool Finish(Pegasus::Array<Pegasus::CIMParamValue>& out);
    virtual void Recover();
    virtual DetailArgs* GetDetail();
    virtual std::string GetDescription();

private:
    DeleteSRADetailArgs* m_args;
};

}  // namespace orvsmis

#endif
