#include "ModifyLdJobDetail.h"

#include <cstdio>

#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/String.h>

#include "DataConnector.h"
#include "LdRawData.h"
#include "RecordRef.h"
#include "ResultInfo.h"
#include "SmisTrace.h"
#include "StorageVolume.h"
#include "VexcfgCommand.h"

using namespace Pegasus;

namespace orvsmis {

ModifyLdJobDetail::ModifyLdJobDetail(ModifyLdDetailArgs* args)
    : m_args(args != nullptr ? args : new ModifyLdDetailArgs()) {}

ModifyLdJobDetail::~ModifyLdJobDetail() { delete m_args; }

DetailArgs* ModifyLdJobDetail::GetDetail() { return m_args; }

bool ModifyLdJobDetail::Execute() {
    ModifyLdDetailArgs& a = *m_args;
    if (!a.ldName.empty()) {
        VexcfgCommand command;
        if (!command.NickLdName(a.ldNumber, a.ldName)) {
            ResultInfo info;
            command.GetError(info);
            a.errors.push_back(info);
            return false;
        }
    }
    if (a.expand) {
        VexcfgCommand command;
        if (!command.LdExpand(a)) {
            ResultInfo info;
            command.GetError(info);
            a.errors.push_back(info);
            return false;
        }
    }
    return true;
}

bool ModifyLdJobDetail::Finish(Array<CIMParamValue>& out) {
    RecordRef<LdRawData> ld;
    if (!DataConnector<LdRawData>::QueryData(m_args->arrayId, m_args->ldNumber, ld.Out())) {
        SMIS_TRACE(LEVEL3, "Can not find Ld RawData.");
        return false;
    }
    if (!m_args->ldName.empty() &&
        !String::equalNoCase(String(ld->LDName.c_str()), String(m_args->ldName.c_str()))) {
        SMIS_TRACE(LEVEL3,
                   "The LD name changed does not exist in Vexview exexution result. oldname=%s, newname=%s",
                   ld->LDName.c_str(), m_args->ldName.c_str());
        return false;
    }
    if (m_args->expand && ld->LDCapacity < m_args->size) {
        SMIS_TRACE(LEVEL3,
                   "The LD capacity expanded does not exist in Vexview exexution result. current size=%llu, "
                   "expand size=%llu",
                   ld->LDCapacity, m_args->size);
        return false;
    }
    out.append(CIMParamValue("Size", CIMValue(Uint64(ld->LDCapacity))));
    out.append(CIMParamValue("TheElement", CIMValue(StorageVolume::WrapReference(m_args->arrayId, m_args->ldNumber))));
    return true;
}

// A rename or an expansion that failed changed nothing to undo.
void ModifyLdJobDetail::Recover() {}

std::string ModifyLdJobDetail::GetDescription() {
    char text[256];
    std::snprintf(text, sizeof text, "Expand a LUN's size : LunID = %s", m_args->ldNumber.c_str());
    return text;
}

}  // namespace orvsmis
