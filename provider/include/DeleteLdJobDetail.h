#ifndef ORVSMIS_DELETELDJOBDETAIL_H
#define ORVSMIS_DELETELDJOBDETAIL_H

#include <string>

#include "DetailArgs.h"
#include "JobDetail.h"

namespace orvsmis {

// The removal of a logical disk: operation 2, kind 6.
class DeleteLdDetailArgs : public DetailArgs {
public:
    DeleteLdDetailArgs() : DetailArgs(OPERATION_DELETE, ELEMENT_LD) {}

    std::string arrayId;
    std::string ldNumber;
};

// Unbinds a logical disk; done when the view no longer shows it.
class DeleteLdJobDetail : public JobDetail {
public:
    // Takes ownership of args.
    explicit DeleteLdJobDetail(DeleteLdDetailArgs* args);
    virtual ~DeleteLdJobDetail();

    virtual bool Execute();
    virtual bool Finish(Pegasus::Array<Pegasus::CIMParamValue>& out);
    virtual void Recover();
    virtual DetailArgs* GetDetail();
    virtual std::string GetDescription();

private:
    DeleteLdDetailArgs* m_args;
};

}  // namespace orvsmis

#endif
