#include "CreateLdJobDetail.h"

#include <cstdio>

#include <Pegasus/Common/CIMValue.h>

#include "CreatePoolAndLdAssistFun.h"
#include "DataConnector.h"
#include "DeleteLdJobDetail.h"
#include "LdRawData.h"
#include "RecordRef.h"
#include "ResultInfo.h"
#include "SmisTrace.h"
#include "StorageVolume.h"
#include "VexcfgCommand.h"

using namespace Pegasus;

namespace orvsmis {

CreateLdJobDetail::CreateLdJobDetail(CreateLdDetailArgs* args)
    : m_args(args != nullptr ? args : new CreateLdDetailArgs()), m_step(STEP_NONE) {}

CreateLdJobDetail::~CreateLdJobDetail() { delete m_args; }

DetailArgs* CreateLdJobDetail::GetDetail() { return m_args; }

bool CreateLdJobDetail::Execute() {
    CreateLdDetailArgs& a = *m_args;
    // The number is chosen now: other jobs may have used the one that was
    // free when the method was called.
    char number[16] = {0};
    if (!GetLDUID(a.arrayId, number, sizeof number)) {
        SMIS_TRACE(LEVEL1, "Error [ INVALID_PARAMETER ] : no free LD number on array %s", a.arrayId.c_str());
        return false;
    }
    a.ldNumber = number;
    m_step = STEP_BIND;
    {
        VexcfgCommand command;
        if (!command.LdBind(a)) {
            ResultInfo info;
            command.GetError(info);
            a.errors.push_back(info);
            return false;
        }
    }
    if (!a.ldName.empty()) {
        m_step = STEP_NAME;
        VexcfgCommand command;
        if (!command.NickLdName(a.ldNumber, a.ldName)) {
            ResultInfo info;
            command.GetError(info);
            a.errors.push_back(info);
            SMIS_TRACE(LEVEL1, "NickLdName Failed.");
            return false;
        }
    }
    return true;
}

bool CreateLdJobDetail::Finish(Array<CIMParamValue>& out) {
    RecordRef<LdRawData> ld;
    if (m_args->ldNumber.empty() || !DataConnector<LdRawData>::QueryData(m_args->arrayId, m_args->ldNumber, ld.Out())) {
        SMIS_TRACE(LEVEL3, "Can not find Ld RawData.");
        return false;
    }
    out.append(CIMParamValue("Size", CIMValue(Uint64(ld->LDCapacity))));
    out.append(CIMParamValue("TheElement", CIMValue(StorageVolume::WrapReference(m_args->arrayId, m_args->ldNumber))));
    return true;
}

void CreateLdJobDetail::Recover() {
    // Only a failed naming leaves something behind: a disk without its name.
    if (m_step != STEP_NAME) return;
    DeleteLdDetailArgs undo;
    undo.arrayId = m_args->arrayId;
    undo.ldNumber = m_args->ldNumber;
    VexcfgCommand command;
    if (!command.LdUnbind(undo)) SMIS_TRACE(LEVEL1, "Recover LD failed,LDN = %s ", m_args->ldNumber.c_str());
}

std::string CreateLdJobDetail::GetDescription() {
    char text[256];
    std::snprintf(text, sizeof text, "Create a LUN : LunID = %s", m_args->ldNumber.c_str());
    return text;
}

}  // namespace orvsmis
