#ifndef ORVSMIS_MEMORYCAUTIONER_H
#define ORVSMIS_MEMORYCAUTIONER_H

#include <string>

#include "ResultInfo.h"

namespace orvsmis {

// Limits on the process and on the repository database. A failed check fills
// the ResultInfo with the code and text of the limit; the callers then take
// the critical exit, since going on would harm the array's management host.
class MemoryCautioner {
public:
    // The process size limit, in kilobytes (180 MB).
    static const long MAX_PROCESS_KB = 184320;

    static MemoryCautioner* Instance();

    // Reads the limits from the configuration (smis/checkMallocSize,
    // smis/MaxDbSize, smis/DBLocation) into the statics.
    MemoryCautioner();

    // smis/checkMallocSize in kilobytes; 0 when the value is 0 or below.
    int GetCheckMallocSize();

    // Allocation probe of mMallocSize kilobytes ("00030" on failure).
    bool PassMemoryThresholdCheck(ResultInfo& info);
    // The process's resident size against MAX_PROCESS_KB ("00030").
    bool PassMemoryThresholdCheckEx(ResultInfo& info);
    // The repository database's size against m_maxDbSize megabytes ("00031",
    // or "00033" when the file is missing).
    bool PassDataBaseThresholdCheck(ResultInfo& info);
    // Fails ("00032") when the repository lies in the flash area.
    bool PassFlashAreaCheck(ResultInfo& info);

    // Resident set size of this process in kilobytes, -1 when unknown.
    static long GetResidentSizeKB();

    // Where "/opt/pegasus/repository" points: 0 flash area, 1 shared log
    // area, 2 performance log area, 3 anything else or no link.
    static int AreaType();

    // Stops the CIM server in order and ends the process: a child runs
    // "/opt/pegasus/bin/disable_cimserver.sh", this process sleeps 600 s
    // and exits 0. Never returns.
    [[noreturn]] static void CriticalExit();

    static int mMallocSize;
    static int m_maxDbSize;
    static std::string m_dbPathName;
};

// The memory watch thread: every second PassMemoryThresholdCheckEx; the first
// failure sends the critical alert, records "abnormal (max memory used)" and
// takes the critical exit.
void* CheckMemoryThread(void* arg);

}  // namespace orvsmis

#endif
