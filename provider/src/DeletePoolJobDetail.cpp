#include "DeletePoolJobDetail.h"

#include <cstdio>

#include "DataConnector.h"
#include "PoolRawData.h"
#include "RecordRef.h"
#include "ResultInfo.h"
#include "SmisTrace.h"
#include "VexcfgCommand.h"

using namespace Pegasus;

namespace orvsmis {

DeletePoolJobDetail::DeletePoolJobDetail(DeletePoolDetailArgs* args)
    : m_args(args != nullptr ? args : new DeletePoolDetailArgs()) {}

DeletePoolJobDetail::~DeletePoolJobDetail() { delete m_args; }

DetailArgs* DeletePoolJobDetail::GetDetail() { return m_args; }

bool DeletePoolJobDetail::Execute() {
    VexcfgCommand command;
    if (command.PoolUnbind(*m_args)) return true;
    ResultInfo info;
    command.GetError(info);
    m_args->errors.push_back(info);
    return false;
}

bool DeletePoolJobDetail::Finish(Array<CIMParamValue>&) {
    RecordRef<PoolRawData> pool;
    if (DataConnector<PoolRawData>::QueryData(m_args->arrayId, m_args->poolNumber, pool.Out())) {
        SMIS_TRACE(LEVEL3, "Info[DeletePoolJobDetail] : Not finished. Pool %s did find", m_args->poolNumber.c_str());
        return false;
    }
    return true;
}

// An unbind that failed left the pool as it was.
void DeletePoolJobDetail::Recover() {}

std::string DeletePoolJobDetail::GetDescription() {
    char text[256];
    std::snprintf(text, sizeof text, "Delete a pool : PoolID = %s", m_args->poolNumber.c_str());
    return text;
}

}  // namespace orvsmis
