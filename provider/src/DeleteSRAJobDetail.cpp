#include "DeleteSRAJobDetail.h"

#include <cstdio>

#include "ResultInfo.h"
#include "SmisTrace.h"
#include "VexcfgCommand.h"

using namespace Pegasus;

namespace orvsmis {

DeleteSRAJobDetail::DeleteSRAJobDetail(DeleteSRADetailArgs* args)
    : m_args(args != nullptr ? args : new DeleteSRADetailArgs()) {}

DeleteSRAJobDetail::~DeleteSRAJobDetail() { delete m_args; }

DetailArgs* DeleteSRAJobDetail::GetDetail() { return m_args; }

bool DeleteSRAJobDetail::Execute() {
    VexcfgCommand command;
    if (command.SraUnbind(m_args->poolNumber)) return true;
    ResultInfo info;
    command.GetError(info);
    m_args->errors.push_back(info);
    return false;
}

// The view shows no reserve area to look for: the accepted command is the
// only sign there is.
bool DeleteSRAJobDetail::Finish(Array<CIMParamValue>&) { return true; }

void DeleteSRAJobDetail::Recover() {}

std::string DeleteSRAJobDetail::GetDescription() {
    char text[256];
    std::snprintf(text, sizeof text, "Delete a SDV : LDN = %s", m_args->poolNumber.c_str());
    return text;
}

}  // namespace orvsmis
