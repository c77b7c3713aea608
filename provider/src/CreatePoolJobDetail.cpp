#include "CreatePoolJobDetail.h"

#include <algorithm>
#include <cstdio>

#include <Pegasus/Common/CIMValue.h>

#include "CreatePoolAndLdAssistFun.h"
#include "DataConnector.h"
#include "ModifyPoolJobDetail.h"
#include "PDmanager.h"
#include "PoolRawData.h"
#include "RecordRef.h"
#include "ResultInfo.h"
#include "SmisTrace.h"
#include "StoragePool.h"
#include "VexcfgCommand.h"

using namespace Pegasus;

namespace orvsmis {

CreatePoolJobDetail::CreatePoolJobDetail(CreatePoolDetailArgs* args)
    : m_args(args != nullptr ? args : new CreatePoolDetailArgs()), m_nextDisk(0) {}

CreatePoolJobDetail::~CreatePoolJobDetail() { delete m_args; }

DetailArgs* CreatePoolJobDetail::GetDetail() { return m_args; }

std::string CreatePoolJobDetail::convertRaidType(int raidCode) { return VexcfgCommand::RaidText(raidCode); }

ModifyPoolDetailArgs CreatePoolJobDetail::ConvertToPoolExpandArgs() const {
    ModifyPoolDetailArgs expand;
    expand.arrayId = m_args->arrayId;
    expand.poolNumber = m_args->poolNumber;
    expand.poolName = m_args->poolName;
    expand.raidCode = m_args->raidCode;
    expand.basePd = m_args->basePd;
    expand.rebuild = m_args->rebuild;
    expand.pdn = m_args->pdn;
    // The tool wants the disks' group with every list of disk numbers; all
    // disks of a new pool come from the one group of the bind.
    expand.pdg = m_args->pdg;
    expand.poolType = m_args->poolType;
    return expand;
}

bool CreatePoolJobDetail::Execute() {
    CreatePoolDetailArgs& a = *m_args;
    const bool isVirtual = a.poolType == "virtual";
    if (a.poolType.empty() || a.pdList.empty() || a.pdg.empty() || a.raidCode == 0 || (isVirtual && a.capacity == 0)) {
        SMIS_TRACE(LEVEL1,
                   "Error [ INVALID_PARAMETER ] : poolname = %s, pooltype = %s, pdn = %d, pdg = %s, raidtype = %d, "
                   "pooltype = %s, capacity = %llu",
                   a.poolName.c_str(), a.poolType.c_str(), static_cast<int>(a.pdList.size()), a.pdg.c_str(),
                   a.raidCode, a.poolType.c_str(), a.capacity);
        return false;
    }
    char number[16] = {0};
    if (!GetPLUID(a.arrayId, number, sizeof number)) {
        SMIS_TRACE(LEVEL1, "Error [ INVALID_PARAMETER ] : no free pool number on array %s", a.arrayId.c_str());
        return false;
    }
    a.poolNumber = number;
    if (a.poolName.empty()) a.poolName = "Pool" + a.poolNumber;

    a.raidText = convertRaidType(a.raidCode);
    if (a.raidText.empty() || ((a.raidCode == 6 || a.raidCode == 8) && a.basePd < 3)) {
        SMIS_TRACE(LEVEL1, "Error [ INVALID_PARAMETER ] : raidtype = %s", a.raidText.c_str());
        return false;
    }

    std::vector<std::string> batches;
    ConverPdList(a.pdList, batches, PD_BATCH);
    a.pdn = batches.front();
    SMIS_TRACE(LEVEL3, "Info[ CreatePoolJobDetail::Execute ] : pool %s over %d disks", a.poolNumber.c_str(),
               static_cast<int>(a.pdList.size()));
    {
        VexcfgCommand command;
        if (!command.PoolBind(a)) {
            ResultInfo info;
            command.GetError(info);
            a.errors.push_back(info);
            m_nextDisk = 0;
            return false;
        }
    }
    m_nextDisk = static_cast<int>(std::min<size_t>(PD_BATCH, a.pdList.size()));

    for (size_t batch = 1; batch < batches.size(); ++batch) {
        const size_t first = batch * PD_BATCH;
        const size_t count = std::min<size_t>(PD_BATCH, a.pdList.size() - first);
        a.pdn = batches[batch];
        a.rebuild = static_cast<int>(count) < a.basePd ? "on" : "off";
        ModifyPoolDetailArgs expand = ConvertToPoolExpandArgs();
        VexcfgCommand command;
        if (!command.PoolExpand(expand)) {
            ResultInfo info;
            command.GetError(info);
            a.errors.push_back(info);
            m_nextDisk = static_cast<int>(first);
            return false;
        }
        m_nextDisk = static_cast<int>(first + count);
    }
    return true;
}

bool CreatePoolJobDetail::Finish(Array<CIMParamValue>& out) {
    RecordRef<PoolRawData> pool;
    if (m_args->poolNumber.empty() ||
        !DataConnector<PoolRawData>::QueryData(m_args->arrayId, m_args->poolNumber, pool.Out())) {
        SMIS_TRACE(LEVEL3, "Info[CreatePoolJobDetail] : Not finished. Pool %s didn't find", m_args->poolNumber.c_str());
        return false;
    }
    for (size_t i = PD_BATCH; i < m_args->pdList.size(); ++i) {
        if (!PDmanager::Instance()->HasSpecificPDNumberToPool(m_args->pdList[i], m_args->poolNumber)) {
            SMIS_TRACE(LEVEL3, "Info[ModifyPoolJobDetail] : Not finished. Pool %s didn't unincorporated.",
                       m_args->poolNumber.c_str());
            return false;
        }
    }
    out.append(CIMParamValue("Size", CIMValue(Uint64(pool->poolCapacity))));
    out.append(CIMParamValue("Pool", CIMValue(StoragePool::WrapReference(m_args->poolNumber, m_args->arrayId))));
    return true;
}

void CreatePoolJobDetail::Recover() {
    std::vector<std::string> unused;
    for (size_t i = static_cast<size_t>(m_nextDisk < 0 ? 0 : m_nextDisk); i < m_args->pdList.size(); ++i) {
        SMIS_TRACE(LEVEL3, "recover pd : %s", m_args->pdList[i].c_str());
        unused.push_back(m_args->pdList[i]);
    }
    PDmanager::Instance()->RecycleUnusedPds(unused, m_args->pdg);
}

std::string CreatePoolJobDetail::GetDescription() {
    char text[256];
    std::snprintf(text, sizeof text, "Create a pool : PoolID = %s, PoolName = %s", m_args->poolNumber.c_str(),
                  m_args->poolName.c_str());
    return text;
}

}  // namespace orvsmis
