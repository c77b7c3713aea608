#include "DeleteLdJobDetail.h"

#include <cstdio>

#include "DataConnector.h"
#include "LdRawData.h"
#include "RecordRef.h"
#include "ResultInfo.h"
#include "SmisTrace.h"
#include "VexcfgCommand.h"

using namespace Pegasus;

namespace orvsmis {

DeleteLdJobDetail::DeleteLdJobDetail(DeleteLdDetailArgs* args)
    : m_args(args != nullptr ? args : new DeleteLdDetailArgs()) {}

DeleteLdJobDetail::~DeleteLdJobDetail() { delete m_args; }

DetailArgs* DeleteLdJobDetail::GetDetail() { return m_args; }

bool DeleteLdJobDetail::Execute() {
    VexcfgCommand command;
    if (command.LdUnbind(*m_args)) return true;
    ResultInfo info;
    command.GetError(info);
    m_args->errors.push_back(info);
    return false;
}

bool DeleteLdJobDetail::Finish(Array<CIMParamValue>&) {
    RecordRef<LdRawData> ld;
    if (DataConnector<LdRawData>::QueryData(m_args->arrayId, m_args->ldNumber, ld.Out())) {
        SMIS_TRACE(LEVEL3, "The LD deleted exists in Vexview exexution result.");
        return false;
    }
    return true;
}

// An unbind that failed left the disk as it was.
void DeleteLdJobDetail::Recover() {}

std::string DeleteLdJobDetail::GetDescription() {
    char text[256];
    std::snprintf(text, sizeof text, "Delete a LUN : LunID = %s", m_args->ldNumber.c_str());
    return text;
}

}  // namespace orvsmis
