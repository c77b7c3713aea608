#include "ModifyPoolJobDetail.h"

#include <cstdio>

#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/String.h>

#include "CreatePoolAndLdAssistFun.h"
#include "CreatePoolJobDetail.h"
#include "DataConnector.h"
#include "PDmanager.h"
#include "PoolRawData.h"
#include "RecordRef.h"
#include "ResultInfo.h"
#include "SmisTrace.h"
#include "StoragePool.h"
#include "VexcfgCommand.h"

using namespace Pegasus;

namespace orvsmis {

namespace {

bool sameNoCase(const std::string& a, const std::string& b) {
    return String::equalNoCase(String(a.c_str()), String(b.c_str()));
}

}  // namespace

ModifyPoolJobDetail::ModifyPoolJobDetail(ModifyPoolDetailArgs* args)
    : m_args(args != nullptr ? args : new ModifyPoolDetailArgs()), m_nextDisk(0) {}

ModifyPoolJobDetail::~ModifyPoolJobDetail() { delete m_args; }

DetailArgs* ModifyPoolJobDetail::GetDetail() { return m_args; }

bool ModifyPoolJobDetail::Execute() {
    ModifyPoolDetailArgs& a = *m_args;
    SMIS_TRACE(LEVEL4, "Entering CreatePoolJobDetail::Execute()");
    if (!a.poolName.empty()) {
        VexcfgCommand command;
        if (!command.NickPoolName(a.poolNumber, a.poolName)) {
            ResultInfo info;
            command.GetError(info);
            a.errors.push_back(info);
            return false;
        }
    }
    if (a.capacity != 0) {
        VexcfgCommand command;
        if (!command.VirtualPoolCapacityExpand(a)) {
            ResultInfo info;
            command.GetError(info);
            a.errors.push_back(info);
            return false;
        }
    }
    if (!a.pdList.empty()) {
        std::vector<std::string> batches;
        ConverPdList(a.pdList, batches, CreatePoolJobDetail::PD_BATCH);
        for (size_t batch = 0; batch < batches.size(); ++batch) {
            a.pdn = batches[batch];
            VexcfgCommand command;
            if (!command.PoolExpand(a)) {
                ResultInfo info;
                command.GetError(info);
                a.errors.push_back(info);
                m_nextDisk = static_cast<int>(batch * CreatePoolJobDetail::PD_BATCH);
                return false;
            }
        }
    }
    m_nextDisk = static_cast<int>(a.pdList.size());
    return true;
}

bool ModifyPoolJobDetail::Finish(Array<CIMParamValue>& out) {
    RecordRef<PoolRawData> pool;
    if (!DataConnector<PoolRawData>::QueryData(m_args->arrayId, m_args->poolNumber, pool.Out())) {
        SMIS_TRACE(LEVEL3, "Can not find Pool RawData.");
        return false;
    }
    if (!m_args->poolName.empty() && !sameNoCase(pool->poolName, m_args->poolName)) {
        SMIS_TRACE(LEVEL3,
                   "Info[ModifyPoolJobDetail] : The Pool name changed does not exist in Vexview exexution result. "
                   "oldname=%s, newname=%s",
                   pool->poolName.c_str(), m_args->poolName.c_str());
        return false;
    }
    if (m_args->capacity != 0 && pool->poolCapacity < m_args->capacity) {
        SMIS_TRACE(LEVEL3,
                   "Info[ModifyPoolJobDetail] : The Pool capacity expanded does not exist in Vexview exexution "
                   "result. current size=%llu, expand size=%llu",
                   pool->poolCapacity, m_args->capacity);
        return false;
    }
    for (const std::string& disk : m_args->pdList) {
        if (!PDmanager::Instance()->HasSpecificPDNumberToPool(disk, m_args->poolNumber)) {
            SMIS_TRACE(LEVEL3, "Info[ModifyPoolJobDetail] : Not finished. Pool %s didn't unincorporated.",
                       m_args->poolNumber.c_str());
            return false;
        }
    }
    out.append(CIMParamValue("Size", CIMValue(Uint64(pool->poolCapacity))));
    out.append(CIMParamValue("Pool", CIMValue(StoragePool::WrapReference(m_args->poolNumber, m_args->arrayId))));
    return true;
}

void ModifyPoolJobDetail::Recover() {
    std::vector<std::string> unused;
    for (size_t i = static_cast<size_t>(m_nextDisk < 0 ? 0 : m_nextDisk); i < m_args->pdList.size(); ++i) {
        SMIS_TRACE(LEVEL3, "recover pd : %s", m_args->pdList[i].c_str());
        unused.push_back(m_args->pdList[i]);
    }
    PDmanager::Instance()->RecycleUnusedPds(unused, m_args->pdg);
}

std::string ModifyPoolJobDetail::GetDescription() {
    char text[256];
    std::snprintf(text, sizeof text, "Expand a pool size : PoolID = %s", m_args->poolNumber.c_str());
    return text;
}

}  // namespace orvsmis
